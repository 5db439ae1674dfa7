#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

namespace tarnwick {

// Shows an item in the user's file manager: the freedesktop FileManager1 ShowItems call,
// which opens the folder that holds the item with the item selected. Where no file manager
// answers it on the session bus, the folder that holds the item opens with the desktop's
// default instead.
class FileManagerLink : public QObject {
    Q_OBJECT

public:
    static constexpr const char* service = "org.freedesktop.FileManager1";
    static constexpr const char* objectPath = "/org/freedesktop/FileManager1";
    static constexpr const char* interface = "org.freedesktop.FileManager1";

    using OpenFolder = std::function<void(const QUrl& folder)>;

    // The session bus and QDesktopServices, unless told otherwise.
    explicit FileManagerLink(QObject* parent = nullptr);
    FileManagerLink(QDBusConnection bus, OpenFolder fallback, QObject* parent = nullptr);

    // Asks for the item at the absolute path; the answer comes later, as the bus answers.
    void show(const QString& path);

Q_SIGNALS:
    // The file manager took the request, or the folder was opened in its place.
    void shown(const QString& path, bool bySelecting);

private:
    QDBusConnection m_bus;
    OpenFolder m_fallback;
};

}
