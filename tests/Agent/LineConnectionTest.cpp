#include "Agent/LineConnection.hpp"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace tarnwick;

namespace {

// A connected pair: the connection under test and the raw descriptor of its peer.
struct Pair {
    std::unique_ptr<LineConnection> connection;
    int peer = -1;

    Pair()
    {
        int descriptors[2];
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, descriptors) == 0) {
            connection = std::make_unique<LineConnection>(descriptors[0]);
            peer = descriptors[1];
        }
    }
    ~Pair()
    {
        if (peer >= 0)
            close(peer);
    }
    void send(std::string_view bytes) const
    {
        ASSERT_EQ(write(peer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    void endStream()
    {
        close(peer);
        peer = -1;
    }
};

}

TEST(LineConnection, TwoLinesInOneReadComeOutOneByOne)
{
    Pair pair;
    pair.send("first\nsecond\n");
    EXPECT_EQ(pair.connection->readLine(), "first");
    // Nothing is left in the socket, so the second line must come from what was read already:
    // another read would wait for the peer, which sends nothing more.
    char byte;
    EXPECT_EQ(recv(pair.connection->descriptor(), &byte, 1, MSG_PEEK | MSG_DONTWAIT), -1);
    EXPECT_EQ(pair.connection->readLine(), "second");
    pair.endStream();
    EXPECT_EQ(pair.connection->readLine(), std::nullopt);
}

TEST(LineConnection, SplitLinesAreJoinedAndAFinalFragmentIsDropped)
{
    Pair pair;
    pair.send("{\"comm");
    pair.send("and\":1}");
    pair.send("\n\ntail without end");
    EXPECT_EQ(pair.connection->readLine(), "{\"command\":1}");
    EXPECT_EQ(pair.connection->readLine(), "");
    pair.endStream();
    EXPECT_EQ(pair.connection->readLine(), std::nullopt);
}

TEST(LineConnection, LongLineAndInvalidUTF8)
{
    Pair pair;
    std::string longLine(200'000, 'x');
    std::thread writer([&] { pair.send(longLine + "\nab\xff\xfe" "c\n"); });
    EXPECT_EQ(pair.connection->readLine(), longLine);
    EXPECT_EQ(pair.connection->readLine(), "ab\xef\xbf\xbd\xef\xbf\xbd" "c");
    writer.join();
}

TEST(LineConnection, WritesLinesAndFailsQuietlyOnAGonePeer)
{
    Pair pair;
    ASSERT_TRUE(pair.connection->writeLine("{\"text\":\"x\"}"));
    char buffer[64] = {};
    ASSERT_EQ(read(pair.peer, buffer, sizeof buffer), 13);
    EXPECT_EQ(std::string(buffer), "{\"text\":\"x\"}\n");
    pair.endStream();
    // No SIGPIPE: the test process would die here if the write raised one.
    EXPECT_FALSE(pair.connection->writeLine(std::string(100'000, 'y')));
}

TEST(LineConnection, SocketAddressLength)
{
    EXPECT_TRUE(unixSocketAddress(std::string(103, 'a')));
    EXPECT_FALSE(unixSocketAddress(std::string(104, 'a')));
    EXPECT_FALSE(unixSocketAddress(""));
    EXPECT_EQ(LineConnection::connect("/nonexistent/Tarnwick.sock"), nullptr);
}
