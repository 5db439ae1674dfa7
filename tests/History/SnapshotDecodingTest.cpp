#include "History/Snapshot.hpp"

#include "Compression/Lzfse.hpp"
#include "History/SnapshotDecoder.hpp"
#include "History/SnapshotEncoder.hpp"
#include "History/SnapshotFixture.hpp"
#include "History/Varint.hpp"
#include "Support/UnicodeNames.hpp"

#include <gtest/gtest.h>

#include <random>

using namespace tarnwick;
using namespace tarnwick::testing;
using Bytes = std::vector<std::uint8_t>;
using Error = Snapshot::DecodingError;

namespace {

Snapshot smallSnapshot()
{
    TreeFixture tree;
    tree.add(TreeFixture::Item { "Photos/a.jpg", 14'000'000, NodeKind::file, std::nullopt, daysAgo(2), daysAgo(9) });
    tree.add(TreeFixture::Item { "Photos/Trip/b.jpg", 11'000'000, NodeKind::file, std::nullopt, daysAgo(40), daysAgo(41) });
    tree.add(TreeFixture::Item { "Music/c.mp3", 12'000'000, NodeKind::file, std::nullopt, daysAgo(500), daysAgo(900) });
    return reduceWithColors(tree.finish());
}

Bytes fileWith(std::uint8_t version, const Bytes& body)
{
    Bytes file { 'T', 'S', 'N', 'P', version };
    Bytes compressed = Lzfse::encode(body);
    file.insert(file.end(), compressed.begin(), compressed.end());
    return file;
}

// A body from a header and raw record bytes.
Bytes bodyOf(const std::string& header, const Bytes& records)
{
    Varint::Writer out(64);
    out.varint(header.size());
    out.bytes(header.data(), header.size());
    out.bytes(records.data(), records.size());
    return std::move(out).finish();
}

std::string plainHeader(int nodeCount, std::string_view extra = "")
{
    return R"({"date":700000000.5,"detail":0,"threshold":10000000,"rootPath":"/r",)" + std::string(extra) + R"("nodeCount":)"
        + std::to_string(nodeCount) + R"(,"dayOrigin":0,"hasColors":false})";
}

// Records of a snapshot without colours: root of 30 MB and one child "a" of 10 MB.
const Bytes twoPlainRecords { 0, 0, 0, 3, 1, 'r', 1, 0, 0, 1, 1, 'a' };

std::optional<Error> errorOf(const std::expected<Snapshot, Error>& result)
{
    return result ? std::nullopt : std::optional<Error>(result.error());
}

}

TEST(SnapshotDecoding, WrongOrMissingMagicIsNotASnapshot)
{
    Bytes file = smallSnapshot().encode().value();
    EXPECT_EQ(errorOf(Snapshot::decode(Bytes { 'T', 'S', 'N' })), Error::notASnapshot());
    EXPECT_EQ(errorOf(Snapshot::decode(Bytes {})), Error::notASnapshot());
    for (std::size_t i = 0; i < 4; ++i) {
        Bytes changed = file;
        changed[i] ^= 0x20;
        EXPECT_EQ(errorOf(Snapshot::decode(changed)), Error::notASnapshot()) << i;
    }
}

TEST(SnapshotDecoding, VersionsOtherThanFiveAndSixAreUnsupported)
{
    Bytes file = smallSnapshot().encode().value();
    ASSERT_EQ(file[4], 6);
    for (std::uint8_t version : { 0, 4, 7, 255 }) {
        Bytes changed = file;
        changed[4] = version;
        EXPECT_EQ(errorOf(Snapshot::decode(changed)), Error::unsupportedVersion(version)) << int(version);
    }
}

TEST(SnapshotDecoding, EveryTruncationFailsCleanly)
{
    Bytes file = smallSnapshot().encode().value();
    ASSERT_TRUE(Snapshot::decode(file));
    for (std::size_t length = 0; length < file.size(); ++length) {
        auto result = Snapshot::decode(std::span(file).first(length));
        ASSERT_FALSE(result) << length;
        EXPECT_EQ(result.error(), length < 4 ? Error::notASnapshot() : Error::damaged()) << length;
    }
    // The same for the uncompressed body: a cut anywhere inside it is damage, never a crash.
    Bytes body = SnapshotEncoder::body(smallSnapshot(), Snapshot::Colors::with).value();
    for (std::size_t length = 0; length < body.size(); ++length)
        ASSERT_EQ(errorOf(SnapshotDecoder::decodeBody(std::span(body).first(length), 6)), Error::damaged()) << length;
}

TEST(SnapshotDecoding, BodiesThatAreNotLzfseAreDamaged)
{
    EXPECT_EQ(errorOf(Snapshot::decode(Bytes { 'T', 'S', 'N', 'P', 6, 'h', 'e', 'l', 'l', 'o' })), Error::damaged());
    EXPECT_EQ(errorOf(Snapshot::decode(Bytes { 'T', 'S', 'N', 'P', 6 })), Error::damaged());
    // An LZVN block that claims to decode to 2 GiB is refused without being expanded.
    Bytes huge { 'T', 'S', 'N', 'P', 6, 'b', 'v', 'x', 'n', 0, 0, 0, 0x80, 8, 0, 0, 0, 0x06, 0, 0, 0, 0, 0, 0, 0, 'b', 'v', 'x', '$' };
    EXPECT_EQ(errorOf(Snapshot::decode(huge)), Error::damaged());
}

TEST(SnapshotDecoding, InconsistentBodiesAreDamaged)
{
    ASSERT_TRUE(SnapshotDecoder::decodeBody(bodyOf(plainHeader(2), twoPlainRecords), 6));
    Bytes tenthByteContinues(10, 0x80);
    struct Case {
        const char* what;
        Bytes body;
    };
    const Case cases[] = {
        { "header length past the end", Bytes { 0xFF, 0x01, '{', '}' } },
        { "header length with a 10th continuing byte", tenthByteContinues },
        { "header not JSON", bodyOf("{\"date\":", twoPlainRecords) },
        { "header not an object", bodyOf("[1,2]", twoPlainRecords) },
        { "header without rootPath", bodyOf(R"({"date":1,"detail":0,"threshold":10000000,"nodeCount":2,"dayOrigin":0,"hasColors":false})", twoPlainRecords) },
        { "string threshold", bodyOf(R"({"date":1,"detail":0,"threshold":"10","rootPath":"/r","nodeCount":2,"dayOrigin":0,"hasColors":false})", twoPlainRecords) },
        { "zero threshold", bodyOf(R"({"date":1,"detail":0,"threshold":0,"rootPath":"/r","nodeCount":2,"dayOrigin":0,"hasColors":false})", twoPlainRecords) },
        { "unknown detail", bodyOf(R"({"date":1,"detail":3,"threshold":10000000,"rootPath":"/r","nodeCount":2,"dayOrigin":0,"hasColors":false})", twoPlainRecords) },
        { "day origin beyond 32 bits", bodyOf(R"({"date":1,"detail":0,"threshold":10000000,"rootPath":"/r","nodeCount":2,"dayOrigin":4294967296,"hasColors":false})", twoPlainRecords) },
        { "date out of range", bodyOf(R"({"date":1e300,"detail":0,"threshold":10000000,"rootPath":"/r","nodeCount":2,"dayOrigin":0,"hasColors":false})", twoPlainRecords) },
        { "volume total without available", bodyOf(plainHeader(2, R"("volumeTotal":5,)"), twoPlainRecords) },
        { "no nodes", bodyOf(plainHeader(0), {}) },
        { "more nodes than records", bodyOf(plainHeader(3), twoPlainRecords) },
        { "a huge node count", bodyOf(plainHeader(2'000'000'000), twoPlainRecords) },
        { "bytes after the last record", bodyOf(plainHeader(1), Bytes { 0, 0, 0, 3, 1, 'r', 7 }) },
        { "root parent not 0", bodyOf(plainHeader(1), Bytes { 1, 0, 0, 3, 1, 'r' }) },
        { "parent distance 0", bodyOf(plainHeader(2), Bytes { 0, 0, 0, 3, 1, 'r', 0, 0, 0, 1, 1, 'a' }) },
        { "parent before the root", bodyOf(plainHeader(2), Bytes { 0, 0, 0, 3, 1, 'r', 2, 0, 0, 1, 1, 'a' }) },
        { "unknown kind", bodyOf(plainHeader(1), Bytes { 0, 7, 0, 3, 1, 'r' }) },
        { "size beyond 64 bits", bodyOf(plainHeader(1), Bytes { 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x01, 1, 'r' }) },
        { "name past the end", bodyOf(plainHeader(1), Bytes { 0, 0, 0, 3, 9, 'r' }) },
    };
    for (const Case& c : cases)
        EXPECT_EQ(errorOf(SnapshotDecoder::decodeBody(c.body, 6)), Error::damaged()) << c.what;
}

TEST(SnapshotDecoding, InconsistentColorRecordsAreDamaged)
{
    const std::string header = R"({"date":1,"detail":0,"threshold":10000000,"rootPath":"/r","nodeCount":1,"dayOrigin":0,"hasColors":true})";
    // parent, kind, flags, size, logical difference, name, three days, rests.
    const Bytes good { 0, 0, 0, 5, 0, 1, 'r', 0, 0, 0, 127 };
    ASSERT_TRUE(SnapshotDecoder::decodeBody(bodyOf(header, good), 6));
    struct Case {
        const char* what;
        Bytes records;
    };
    const Case cases[] = {
        { "rest list not closed", { 0, 0, 0, 5, 0, 1, 'r', 0, 0, 0 } },
        { "rest mode 4", { 0, 0, 0, 5, 0, 1, 'r', 0, 0, 0, 64, 1, 127 } },
        { "content key 13", { 0, 0, 0, 5, 0, 1, 'r', 0, 0, 0, 13, 1, 127 } },
        { "hidden key 2", { 0, 0, 0, 5, 0, 1, 'r', 0, 0, 0, 50, 1, 127 } },
        { "rest part without bytes", { 0, 0, 0, 5, 0, 1, 'r', 0, 0, 0, 0 } },
        { "day landing on the unknown value", { 0, 0, 0, 5, 0, 1, 'r', 0x80, 0x80, 0x80, 0x80, 0x10, 0, 0, 127 } },
        { "days missing", { 0, 0, 0, 5, 0, 1, 'r' } },
    };
    for (const Case& c : cases)
        EXPECT_EQ(errorOf(SnapshotDecoder::decodeBody(bodyOf(header, c.records), 6)), Error::damaged()) << c.what;
}

TEST(SnapshotDecoding, RandomDamageNeverCrashes)
{
    const Bytes file = smallSnapshot().encode().value();
    const Bytes body = SnapshotEncoder::body(smallSnapshot(), Snapshot::Colors::with).value();
    std::mt19937 random(7);
    int decoded = 0;
    for (int round = 0; round < 3000; ++round) {
        Bytes changed = round % 2 ? file : body;
        int flips = 1 + static_cast<int>(random() % 4);
        for (int f = 0; f < flips; ++f)
            changed[5 + random() % (changed.size() - 5)] = static_cast<std::uint8_t>(random());
        auto result = round % 2 ? Snapshot::decode(changed) : SnapshotDecoder::decodeBody(changed, 6);
        if (result) {
            ++decoded;
            // Whatever was read is a snapshot that can be written again.
            EXPECT_TRUE(result->isConsistent());
        }
    }
    EXPECT_LT(decoded, 3000);
}

TEST(SnapshotDecoding, VersionFiveIsRead)
{
    // Version 5 kept the dates of a snapshot with colours in its header and wrote no day
    // values or rests in its records.
    Snapshot::Header header;
    header.date = fixtureNow();
    header.rootPath = "/old";
    header.nodeCount = 2;
    header.hasColors = true;
    header.timestamps = std::vector<Snapshot::Timestamps> { { 8500, 8000, 7000 }, { 8400, 8100, Snapshot::unknownDay } };
    // root 25,000,001 bytes (unit 1 byte), logical 20,000,001; child 12,300,000 (123 units), logical equal.
    Bytes records { 0, 0, 0, 0xC1, 0xF0, 0xF5, 0x0B, 0xFF, 0xAC, 0xE2, 0x04, 1, 'o', 1, 0, 0x80, 123, 0, 4, 'd', 'a', 't', 'a' };
    Bytes file = fileWith(5, bodyOf(header.json(), records));
    auto result = Snapshot::decode(file);
    ASSERT_TRUE(result) << int(result.error().reason);
    const Snapshot& snapshot = *result;
    EXPECT_EQ(snapshot.names, (std::vector<std::string> { "o", "data" }));
    EXPECT_EQ(snapshot.preciseAllocated, (std::vector<std::int64_t> { 25'000'001, 12'300'000 }));
    EXPECT_EQ(snapshot.logical, (std::vector<std::int64_t> { 20'000'001, 12'300'000 }));
    EXPECT_EQ(snapshot.allocated, (std::vector<std::int64_t> { 20'000'000, 10'000'000 }));
    EXPECT_EQ(snapshot.hidden, (std::vector<bool> { false, true }));
    EXPECT_EQ(snapshot.lastChangeDays, (std::vector<std::int32_t> { 8500, 8400 }));
    EXPECT_EQ(snapshot.oldestItemDays, (std::vector<std::int32_t> { 8000, 8100 }));
    EXPECT_EQ(snapshot.ownCreationDays, (std::vector<std::pair<std::int32_t, std::int32_t>> { { 0, 7000 } }));
    EXPECT_TRUE(snapshot.restContent.parts.empty());
    EXPECT_EQ(snapshot.date, fixtureNow());
    // Written again, it is a version 6 file that reads back the same.
    Bytes rewritten = snapshot.encode().value();
    EXPECT_EQ(rewritten[4], 6);
    EXPECT_EQ(Snapshot::decode(rewritten).value(), snapshot);
}

TEST(SnapshotDecoding, InvalidUTF8NamesAreRepaired)
{
    Snapshot snapshot = smallSnapshot();
    const std::string broken = std::string("Bad\xFF") + "na\xC3" + "me";
    snapshot.names[1] = broken;
    snapshot.rootPath = "/scan\xFE";
    Snapshot back = Snapshot::decode(snapshot.encode().value()).value();
    EXPECT_EQ(back.names[1], UnicodeNames::repaired(broken));
    EXPECT_EQ(back.names[1], "Bad\xEF\xBF\xBDna\xEF\xBF\xBDme");
    EXPECT_TRUE(UnicodeNames::isValidUTF8(back.rootPath));
    EXPECT_EQ(back.names[2], snapshot.names[2]);
}
