#include "Platform/PowerState.hpp"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace tarnwick {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> firstLine(const fs::path& file)
{
    std::ifstream in(file);
    std::string line;
    if (!in || !std::getline(in, line))
        return std::nullopt;
    while (!line.empty() && (line.back() == '\n' || line.back() == ' ' || line.back() == '\r'))
        line.pop_back();
    return line;
}

std::optional<long long> number(const fs::path& file)
{
    auto line = firstLine(file);
    if (!line)
        return std::nullopt;
    long long value = 0;
    auto [end, error] = std::from_chars(line->data(), line->data() + line->size(), value);
    if (error != std::errc() || end != line->data() + line->size())
        return std::nullopt;
    return value;
}

std::vector<fs::path> entries(const fs::path& folder, std::string_view prefix)
{
    std::vector<fs::path> found;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (entry.path().filename().string().starts_with(prefix))
            found.push_back(entry.path());
    }
    std::ranges::sort(found);
    return found;
}

void readPower(const fs::path& folder, PowerState& state)
{
    bool mainsOnline = false;
    bool discharging = false;
    long long percentSum = 0;
    int batteries = 0;
    for (const fs::path& supply : entries(folder, "")) {
        std::string type = firstLine(supply / "type").value_or("");
        if (type == "Mains" || type == "USB") {
            mainsOnline = mainsOnline || number(supply / "online").value_or(0) == 1;
        } else if (type == "Battery") {
            // A mouse's or a headset's battery says nothing about the machine.
            if (firstLine(supply / "scope").value_or("System") == "Device")
                continue;
            if (auto capacity = number(supply / "capacity")) {
                percentSum += std::clamp<long long>(*capacity, 0, 100);
                ++batteries;
            }
            discharging = discharging || firstLine(supply / "status").value_or("") == "Discharging";
        }
    }
    state.onBattery = discharging && !mainsOnline;
    if (batteries > 0)
        state.batteryPercent = static_cast<int>(percentSum / batteries);
}

PowerState::Thermal zoneLevel(const fs::path& zone)
{
    auto temperature = number(zone / "temp");
    if (!temperature)
        return PowerState::Thermal::nominal;
    PowerState::Thermal level = PowerState::Thermal::nominal;
    for (int trip = 0;; ++trip) {
        std::string stem = "trip_point_" + std::to_string(trip) + "_";
        auto type = firstLine(zone / (stem + "type"));
        if (!type)
            break;
        auto limit = number(zone / (stem + "temp"));
        // Firmware leaves unused trip points at 0 or below.
        if (!limit || *limit <= 0 || *temperature < *limit)
            continue;
        PowerState::Thermal reached = *type == "critical" ? PowerState::Thermal::critical
            : *type == "hot"                              ? PowerState::Thermal::serious
            : *type == "passive"                          ? PowerState::Thermal::fair
                                                          : PowerState::Thermal::nominal;
        level = std::max(level, reached);
    }
    return level;
}

}

PowerState PowerState::read(const std::string& classFolder)
{
    PowerState state;
    fs::path root(classFolder);
    readPower(root / "power_supply", state);
    for (const fs::path& zone : entries(root / "thermal", "thermal_zone"))
        state.thermal = std::max(state.thermal, zoneLevel(zone));
    return state;
}

}
