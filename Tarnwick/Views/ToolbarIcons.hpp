#pragma once

#include <QIcon>

// The toolbar's icons, drawn as lines so that they look alike under every style and on
// systems without an icon theme.
namespace tarnwick::ToolbarIcons {

QIcon back();
QIcon forward();
QIcon up();
QIcon rescan();
QIcon stop();
QIcon folder();
QIcon changes();
QIcon settings();

}
