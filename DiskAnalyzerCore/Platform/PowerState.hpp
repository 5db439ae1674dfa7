#pragma once

#include <optional>
#include <string>

namespace tarnwick {

// Whether the machine is short of power or running hot, for work that can wait (the daily
// snapshot). On Linux: the batteries and mains of /sys/class/power_supply, and the thermal
// zones of /sys/class/thermal against their trip points.
struct PowerState {
    // As the system's thermal pressure levels are numbered.
    enum class Thermal : int { nominal = 0, fair = 1, serious = 2, critical = 3 };

    static constexpr int lowBatteryPercent = 20;

    bool onBattery = false;             // a system battery discharges and no mains supply is online
    std::optional<int> batteryPercent;  // of the system batteries together
    Thermal thermal = Thermal::nominal; // the hottest zone: passive trip fair, hot serious, critical critical

    // The Linux form of a low-power mode: on battery below 20 %.
    [[nodiscard]] bool isLowPower() const { return onBattery && batteryPercent && *batteryPercent < lowBatteryPercent; }
    [[nodiscard]] bool isHot() const { return thermal == Thermal::serious || thermal == Thermal::critical; }
    [[nodiscard]] bool asksToDefer() const { return isLowPower() || isHot(); }

    // From the kernel's class folder ("/sys/class", or a copy of its layout for tests). What
    // cannot be read counts as mains power and a cool machine.
    static PowerState read(const std::string& classFolder = "/sys/class");

    bool operator==(const PowerState&) const = default;
};

}
