#include "FileManagerLink.hpp"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QFileInfo>

namespace tarnwick {

namespace {

// A file manager that does not answer within this long is taken as none.
constexpr int answerMilliseconds = 2000;

}

FileManagerLink::FileManagerLink(QObject* parent)
    : FileManagerLink(QDBusConnection::sessionBus(), [](const QUrl& folder) { QDesktopServices::openUrl(folder); }, parent)
{
}

FileManagerLink::FileManagerLink(QDBusConnection bus, OpenFolder fallback, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
    , m_fallback(std::move(fallback))
{
}

void FileManagerLink::show(const QString& path)
{
    QUrl folder = QUrl::fromLocalFile(QFileInfo(path).absolutePath());
    auto openFolder = [this, path, folder] {
        if (m_fallback)
            m_fallback(folder);
        Q_EMIT shown(path, false);
    };
    if (!m_bus.isConnected()) {
        openFolder();
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(service, objectPath, interface, QStringLiteral("ShowItems"));
    // URIs, encoded (a blank as %20), as file managers parse them.
    call << QStringList { QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded) } << QString();
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, answerMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, path, openFolder](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        if (finished->isError())
            openFolder();
        else
            Q_EMIT shown(path, true);
    });
}

}
