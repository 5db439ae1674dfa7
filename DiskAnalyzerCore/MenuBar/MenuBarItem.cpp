#include "MenuBar/MenuBarItem.hpp"

#include "Support/Phrases.hpp"
#include "Support/ByteFormat.hpp"
#include "Support/Phrases.hpp"
#include "MenuBar/MenuBarTexts.hpp"

#include <algorithm>
#include <limits>

namespace tarnwick::MenuBarItem {

namespace {

std::int64_t magnitude(std::int64_t value)
{
    if (value == std::numeric_limits<std::int64_t>::min())
        return std::numeric_limits<std::int64_t>::max();
    return value < 0 ? -value : value;
}

bool changeShows(const MenuBarDisk& disk, std::int64_t threshold)
{
    return disk.change && magnitude(*disk.change) >= threshold;
}

MenuBarSegment segmentOf(const MenuBarDisk& disk, const MenuBarStyle& style, std::int64_t threshold, bool showsName)
{
    MenuBarSegment segment { disk.id, disk.name, showsName };
    if (style.showsFreePercent)
        segment.freeShare = freeShare(disk);
    if (style.showsFreeBytes)
        segment.freeBytes = disk.available;
    if (style.showsChange && changeShows(disk, threshold)) {
        segment.change = disk.change;
        segment.changeIsUncertain = disk.changeIsUncertain;
        segment.changeSince = disk.changeSince;
    }
    segment.isAlerted = disk.isAlerted;
    segment.number = disk.number;
    return segment;
}

// The disk with the smallest free share; one whose share is unknown never counts as full,
// and on equal shares the earlier disk stays.
const MenuBarDisk* fullest(const std::vector<const MenuBarDisk*>& disks)
{
    const MenuBarDisk* best = nullptr;
    double bestShare = std::numeric_limits<double>::infinity();
    for (const MenuBarDisk* disk : disks) {
        double share = freeShare(*disk).value_or(std::numeric_limits<double>::infinity());
        if (!best || share < bestShare) {
            best = disk;
            bestShare = share;
        }
    }
    return best;
}

const MenuBarDisk* mostNotable(const std::vector<MenuBarDisk>& disks, const MenuBarStyle& style, std::int64_t threshold)
{
    std::vector<const MenuBarDisk*> alerted, changed, all;
    for (const MenuBarDisk& disk : disks) {
        all.push_back(&disk);
        if (disk.isAlerted)
            alerted.push_back(&disk);
        if (changeShows(disk, threshold))
            changed.push_back(&disk);
    }
    if (!alerted.empty())
        return fullest(alerted);
    if (style.showsChange && !changed.empty()) {
        return *std::ranges::max_element(changed, [](const MenuBarDisk* a, const MenuBarDisk* b) {
            // Strictly less, so that of equal changes the first one wins.
            return magnitude(*a->change) < magnitude(*b->change);
        });
    }
    return fullest(all);
}

}

std::optional<double> freeShare(const MenuBarDisk& disk)
{
    if (!disk.capacity || !disk.available || *disk.capacity < 1)
        return std::nullopt;
    return std::clamp(static_cast<double>(*disk.available) / static_cast<double>(*disk.capacity), 0.0, 1.0);
}

std::vector<MenuBarDisk> selected(std::span<const MenuBarDisk> disks, const MenuBarStyle::Disks& choice)
{
    std::vector<MenuBarDisk> chosen;
    for (const MenuBarDisk& disk : disks) {
        bool takes = false;
        switch (choice.kind) {
        case MenuBarStyle::Disks::Kind::all:
            takes = true;
            break;
        case MenuBarStyle::Disks::Kind::physical:
            takes = !disk.isDiskImage;
            break;
        case MenuBarStyle::Disks::Kind::chosen:
            takes = std::ranges::find(choice.chosen, disk.id) != choice.chosen.end();
            break;
        }
        if (takes)
            chosen.push_back(disk);
    }
    return chosen;
}

std::vector<MenuBarSegment> segments(std::span<const MenuBarDisk> disks, const MenuBarStyle& style, std::int64_t threshold)
{
    std::vector<MenuBarDisk> shown = selected(disks, style.disks);
    std::vector<MenuBarSegment> result;
    if (shown.empty())
        return result;
    if (style.layout == MenuBarStyle::Layout::each) {
        for (const MenuBarDisk& disk : shown) {
            MenuBarSegment segment = segmentOf(disk, style, threshold, false);
            if (!segment.showsNothing())
                result.push_back(std::move(segment));
        }
        return result;
    }
    MenuBarSegment segment = segmentOf(*mostNotable(shown, style, threshold), style, threshold, shown.size() > 1);
    if (!segment.showsNothing())
        result.push_back(std::move(segment));
    return result;
}

std::string freeShareText(double share)
{
    return Phrases::percent(share);
}

std::string changeText(std::int64_t change, bool uncertain)
{
    std::string text = uncertain ? "≈" : "";
    text += change < 0 ? "−" : "+";
    return text + ByteFormat::format(magnitude(change));
}

std::string description(const MenuBarSegment& segment)
{
    std::vector<std::string> parts;
    if (segment.freeShare)
        parts.push_back(freeShareText(*segment.freeShare) + " " + std::string(MenuBarTexts::free));
    if (segment.freeBytes)
        parts.push_back(ByteFormat::format(*segment.freeBytes) + " " + std::string(MenuBarTexts::free));
    if (segment.change)
        parts.push_back(changeText(*segment.change, segment.changeIsUncertain) + " "
            + (segment.changeSince ? MenuBarTexts::sinceInstead(Phrases::localDay(*segment.changeSince)) : std::string(MenuBarTexts::sinceYesterday)));
    if (segment.isAlerted)
        parts.push_back(std::string(MenuBarTexts::alerted));
    std::string text = segment.name;
    if (segment.number)
        text += " (" + std::to_string(*segment.number) + ")";
    for (std::size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? ": " : ", ") + parts[i];
    return text;
}

}
