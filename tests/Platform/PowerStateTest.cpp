#include "Platform/PowerState.hpp"
#include "Support/TempFolder.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <map>

using namespace tarnwick;
using Thermal = PowerState::Thermal;

namespace {

// A copy of the kernel's class folder layout with only the files the reader looks at.
class FakeSysClass {
public:
    void write(const std::string& relative, const std::string& text)
    {
        folder.makeFolder(relative.substr(0, relative.rfind('/')));
        std::ofstream(folder / relative) << text << "\n";
    }
    void supply(const std::string& name, std::map<std::string, std::string> files)
    {
        for (const auto& [file, text] : files)
            write("power_supply/" + name + "/" + file, text);
    }
    void zone(int number, long long temperature, std::vector<std::pair<std::string, long long>> trips)
    {
        std::string zone = "thermal/thermal_zone" + std::to_string(number) + "/";
        write(zone + "temp", std::to_string(temperature));
        for (std::size_t i = 0; i < trips.size(); ++i) {
            write(zone + "trip_point_" + std::to_string(i) + "_type", trips[i].first);
            write(zone + "trip_point_" + std::to_string(i) + "_temp", std::to_string(trips[i].second));
        }
    }
    PowerState read() const { return PowerState::read(folder.path()); }

    fixtures::TempFolder folder;
};

}

TEST(PowerState, NothingToReadIsMainsAndCool)
{
    FakeSysClass sys;
    EXPECT_EQ(sys.read(), PowerState {});
    EXPECT_FALSE(PowerState::read("/nonexistent/class").asksToDefer());
}

TEST(PowerState, LowPowerIsOnBatteryBelowTwentyPercent)
{
    struct Case {
        const char* what;
        std::string status;
        std::string capacity;
        bool mainsOnline;
        bool lowPower;
    };
    const Case cases[] {
        { "discharging at 19 %", "Discharging", "19", false, true },
        { "discharging at 20 %", "Discharging", "20", false, false },
        { "charging at 5 %", "Charging", "5", true, false },
        { "mains online, battery reports discharging", "Discharging", "5", true, false },
        { "unreadable capacity", "Discharging", "unknown", false, false },
    };
    for (const Case& c : cases) {
        FakeSysClass sys;
        sys.supply("BAT0", { { "type", "Battery" }, { "status", c.status }, { "capacity", c.capacity } });
        sys.supply("AC", { { "type", "Mains" }, { "online", c.mainsOnline ? "1" : "0" } });
        EXPECT_EQ(sys.read().isLowPower(), c.lowPower) << c.what;
        EXPECT_EQ(sys.read().asksToDefer(), c.lowPower) << c.what;
    }
}

TEST(PowerState, BatteriesOfDevicesDoNotCount)
{
    FakeSysClass sys;
    sys.supply("hidpp_battery_0", { { "type", "Battery" }, { "scope", "Device" }, { "status", "Discharging" }, { "capacity", "3" } });
    PowerState state = sys.read();
    EXPECT_FALSE(state.onBattery);
    EXPECT_FALSE(state.batteryPercent);

    // Two system batteries count together.
    sys.supply("BAT0", { { "type", "Battery" }, { "status", "Discharging" }, { "capacity", "10" } });
    sys.supply("BAT1", { { "type", "Battery" }, { "status", "Unknown" }, { "capacity", "40" } });
    state = sys.read();
    EXPECT_TRUE(state.onBattery);
    EXPECT_EQ(state.batteryPercent, 25);
    EXPECT_FALSE(state.isLowPower());
}

TEST(PowerState, ThermalLevelFromTheHottestZonesTripPoints)
{
    struct Case {
        long long temperature;
        Thermal level;
    };
    const std::vector<std::pair<std::string, long long>> trips { { "active", 50000 }, { "passive", 80000 }, { "hot", 95000 },
        { "critical", 105000 } };
    const Case cases[] {
        { 60000, Thermal::nominal }, { 80000, Thermal::fair }, { 94999, Thermal::fair }, { 95000, Thermal::serious },
        { 105000, Thermal::critical }, { 120000, Thermal::critical },
    };
    for (const Case& c : cases) {
        FakeSysClass sys;
        sys.zone(0, 30000, trips);
        sys.zone(1, c.temperature, trips);
        PowerState state = sys.read();
        EXPECT_EQ(state.thermal, c.level) << c.temperature;
        // Fair proceeds; serious and critical wait.
        EXPECT_EQ(state.asksToDefer(), c.level == Thermal::serious || c.level == Thermal::critical) << c.temperature;
    }
    // An unused trip point at 0 is not reached by every temperature.
    FakeSysClass unused;
    unused.zone(0, 40000, { { "critical", 0 } });
    EXPECT_EQ(unused.read().thermal, Thermal::nominal);
}
