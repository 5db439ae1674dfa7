#include "TerminalLauncher.hpp"

#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace tarnwick::TerminalLauncher {

bool open(const QString& folder)
{
    QStringList candidates;
    QString chosen = qEnvironmentVariable("TERMINAL");
    if (!chosen.isEmpty())
        candidates << chosen;
    candidates << QStringLiteral("x-terminal-emulator") << QStringLiteral("gnome-terminal") << QStringLiteral("konsole")
               << QStringLiteral("xfce4-terminal") << QStringLiteral("kitty") << QStringLiteral("alacritty") << QStringLiteral("xterm");
    for (const QString& name : candidates) {
        QString program = QStandardPaths::findExecutable(name);
        // Every one of these starts in the working directory it is given.
        if (!program.isEmpty() && QProcess::startDetached(program, {}, folder))
            return true;
    }
    return false;
}

}
