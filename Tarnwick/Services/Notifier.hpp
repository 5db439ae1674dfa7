#pragma once

#include <string>

namespace tarnwick {

// Shows the user a notification. On the desktop the tray icon posts it; where none can be
// shown, the implementation logs why ("alerts: notification not delivered: …").
class Notifier {
public:
    virtual ~Notifier() = default;
    virtual void notify(const std::string& title, const std::string& body) = 0;
};

}
