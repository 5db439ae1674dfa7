#include "ViewTestSupport.hpp"
#include "Views/FileManagerLink.hpp"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QStandardPaths>

namespace tarnwick {
namespace {

using testing::waitFor;

// A file manager on the bus, as the desktop's would be: it records what it was asked to show.
class FakeFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;

public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString& startupID)
    {
        Q_UNUSED(startupID);
        shown << uris;
    }
};

// A bus of the test's own, so that no file manager of the machine answers.
class FileManagerLinkTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            GTEST_SKIP() << "dbus-daemon is not installed";
        bus.start(daemon, { QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address") });
        ASSERT_TRUE(bus.waitForStarted());
        ASSERT_TRUE(waitFor([&] { return bus.canReadLine(); }));
        QString address = QString::fromUtf8(bus.readLine()).trimmed();
        connection = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(address, QStringLiteral("fileManagerTest")));
        ASSERT_TRUE(connection->isConnected());
    }

    void TearDown() override
    {
        if (connection)
            QDBusConnection::disconnectFromBus(QStringLiteral("fileManagerTest"));
        bus.kill();
        bus.waitForFinished();
    }

    // Shows path through a link on the test's bus; whether the item was selected, once it answers.
    std::optional<bool> show(const QString& path)
    {
        FileManagerLink link(*connection, [&](const QUrl& folder) { opened << folder; });
        std::optional<bool> selected;
        QObject::connect(&link, &FileManagerLink::shown, [&](const QString&, bool bySelecting) { selected = bySelecting; });
        link.show(path);
        waitFor([&] { return selected.has_value(); });
        return selected;
    }

    QProcess bus;
    std::unique_ptr<QDBusConnection> connection;
    QList<QUrl> opened;
};

}

TEST_F(FileManagerLinkTest, AFileManagerOnTheBusSelectsTheItem)
{
    FakeFileManager fake;
    ASSERT_TRUE(connection->registerService(QString::fromUtf8(FileManagerLink::service)));
    ASSERT_TRUE(connection->registerObject(QString::fromUtf8(FileManagerLink::objectPath), &fake, QDBusConnection::ExportAllSlots));
    EXPECT_EQ(show(QStringLiteral("/home/alex/Videos/trip with spaces.mp4")), true);
    EXPECT_EQ(fake.shown, QStringList { QStringLiteral("file:///home/alex/Videos/trip%20with%20spaces.mp4") });
    EXPECT_TRUE(opened.isEmpty());
}

TEST_F(FileManagerLinkTest, WithoutOneTheFolderThatHoldsTheItemOpens)
{
    EXPECT_EQ(show(QStringLiteral("/home/alex/Videos/trip.mp4")), false);
    EXPECT_EQ(opened, QList<QUrl> { QUrl::fromLocalFile(QStringLiteral("/home/alex/Videos")) });
}

}

#include "FileManagerLinkTest.moc"
