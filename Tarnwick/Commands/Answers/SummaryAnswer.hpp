#pragma once

#include "Classification/ContentShare.hpp"
#include "PlaceFacts.hpp"
#include "Scanning/NodeKind.hpp"
#include "Scanning/TreeDate.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick {

// A folder's contents as summary gives them: its sizes, its largest items, its content
// types and the brief facts of its owners, caches, hidden items and on-disk / size ratios.
struct SummaryAnswer {
    // One of the largest items inside, with what is known of it.
    struct Item {
        std::string name;
        std::string path;
        NodeKind kind = NodeKind::file;
        std::int64_t allocated = 0;
        std::int64_t logical = 0;
        double share = 0;        // of the folder's size on disk
        bool incomplete = false; // sizes are lower bounds
        std::optional<std::string> status;
        std::optional<Date> lastChangeInside;
        std::optional<Date> oldestItem;
        std::optional<std::string> hardLinkNote;      // the sentence, when a hard link is counted elsewhere
        std::optional<std::string> hardLinkCountedAt; // the path it is counted at
    };
    // The disk, for a scan of a whole disk.
    struct Disk {
        std::int64_t capacity = 0;
        std::int64_t available = 0;
        std::int64_t reserved = 0;
        std::int64_t unaccounted = 0; // used, but not by anything the scan found
    };

    std::string path;
    NodeKind kind = NodeKind::directory;
    std::int64_t allocated = 0;
    std::int64_t logical = 0;
    bool incomplete = false;        // allocated and logical are lower bounds
    bool logicalIncomplete = false; // logical is a lower bound
    bool stillScanning = false;     // the answer is from a first scan's preview
    std::int64_t childCount = 0;    // items directly inside
    std::optional<std::int64_t> itemsInAll; // every item below, for the scan's root
    std::optional<std::string> status;
    std::optional<Date> lastChangeInside;
    std::optional<Date> oldestItem;
    std::optional<std::int64_t> sizeBeforeRescan;
    std::optional<Disk> disk;
    std::optional<std::vector<ContentShare>> contentTypes; // largest first; absent before the scan's colours are made
    PlaceFacts facts;
    std::vector<Item> items;        // the largest, largest first, as many as asked for
    std::int64_t otherCount = 0;    // the items past those
    std::int64_t otherAllocated = 0;
    std::int64_t unreadablePlaces = 0; // at or below the folder
};

}
