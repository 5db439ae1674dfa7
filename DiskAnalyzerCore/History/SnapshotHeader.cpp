#include "History/Snapshot.hpp"

#include <nlohmann/json.hpp>

namespace tarnwick {

namespace {

using OrderedJSON = nlohmann::ordered_json;
using JSON = nlohmann::json;

std::optional<std::int64_t> integer(const JSON& value)
{
    if (value.is_number_unsigned()) {
        auto unsignedValue = value.get<std::uint64_t>();
        if (unsignedValue > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return std::nullopt;
        return static_cast<std::int64_t>(unsignedValue);
    }
    if (value.is_number_integer())
        return value.get<std::int64_t>();
    return std::nullopt;
}

std::optional<std::int32_t> integer32(const JSON& value)
{
    std::optional<std::int64_t> wide = integer(value);
    if (!wide || *wide < std::numeric_limits<std::int32_t>::min() || *wide > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return static_cast<std::int32_t>(*wide);
}

const JSON* member(const JSON& object, const char* key)
{
    auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::optional<std::vector<std::int32_t>> dayList(const JSON& value)
{
    if (!value.is_array())
        return std::nullopt;
    std::vector<std::int32_t> days;
    days.reserve(value.size());
    for (const JSON& item : value) {
        std::optional<std::int32_t> day = integer32(item);
        if (!day)
            return std::nullopt;
        days.push_back(*day);
    }
    return days;
}

std::optional<std::vector<std::string>> pathList(const JSON& value)
{
    if (!value.is_array())
        return std::nullopt;
    std::vector<std::string> paths;
    paths.reserve(value.size());
    for (const JSON& item : value) {
        if (!item.is_string())
            return std::nullopt;
        paths.push_back(item.get<std::string>());
    }
    return paths;
}

std::optional<std::vector<Snapshot::Timestamps>> timestampList(const JSON& value)
{
    if (!value.is_array())
        return std::nullopt;
    std::vector<Snapshot::Timestamps> list;
    list.reserve(value.size());
    for (const JSON& item : value) {
        if (!item.is_object())
            return std::nullopt;
        const JSON* modified = member(item, "modified");
        const JSON* oldest = member(item, "oldest");
        const JSON* created = member(item, "created");
        if (!modified || !oldest || !created)
            return std::nullopt;
        auto m = integer32(*modified), o = integer32(*oldest), c = integer32(*created);
        if (!m || !o || !c)
            return std::nullopt;
        list.push_back(Snapshot::Timestamps { *m, *o, *c });
    }
    return list;
}

// Reads an optional key: absent is fine, present with the wrong type makes the header invalid.
template <typename T, typename Read>
bool readOptional(const JSON& object, const char* key, std::optional<T>& into, Read read)
{
    const JSON* value = member(object, key);
    if (!value || value->is_null())
        return true;
    into = read(*value);
    return into.has_value();
}

}

std::string Snapshot::Header::json() const
{
    OrderedJSON object = OrderedJSON::object();
    object["date"] = SnapshotDates::secondsSinceReference(date);
    object["detail"] = static_cast<std::uint8_t>(detail);
    object["threshold"] = threshold;
    object["rootPath"] = rootPath;
    if (volumeTotal)
        object["volumeTotal"] = *volumeTotal;
    if (volumeAvailable)
        object["volumeAvailable"] = *volumeAvailable;
    object["nodeCount"] = nodeCount;
    object["dayOrigin"] = dayOrigin;
    object["hasColors"] = hasColors;
    if (restDays)
        object["restDays"] = *restDays;
    if (coverage)
        object["coverage"] = *coverage;
    if (timestamps) {
        OrderedJSON list = OrderedJSON::array();
        for (const Timestamps& item : *timestamps) {
            OrderedJSON entry = OrderedJSON::object();
            entry["modified"] = item.modified;
            entry["oldest"] = item.oldest;
            entry["created"] = item.created;
            list.push_back(std::move(entry));
        }
        object["timestamps"] = std::move(list);
    }
    // Paths are file-system bytes; any invalid UTF-8 in them is replaced rather than refused.
    return object.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

std::optional<Snapshot::Header> Snapshot::Header::parse(std::string_view text)
{
    JSON object = JSON::parse(text.begin(), text.end(), nullptr, false);
    if (object.is_discarded() || !object.is_object())
        return std::nullopt;
    const JSON* date = member(object, "date");
    const JSON* detail = member(object, "detail");
    const JSON* threshold = member(object, "threshold");
    const JSON* rootPath = member(object, "rootPath");
    const JSON* nodeCount = member(object, "nodeCount");
    const JSON* dayOrigin = member(object, "dayOrigin");
    const JSON* hasColors = member(object, "hasColors");
    if (!date || !detail || !threshold || !rootPath || !nodeCount || !dayOrigin || !hasColors)
        return std::nullopt;
    if (!date->is_number() || !rootPath->is_string() || !hasColors->is_boolean())
        return std::nullopt;

    Header header;
    std::optional<Date> when = SnapshotDates::fromSecondsSinceReference(date->get<double>());
    std::optional<std::int64_t> detailValue = integer(*detail);
    std::optional<std::int64_t> thresholdValue = integer(*threshold);
    std::optional<std::int64_t> count = integer(*nodeCount);
    std::optional<std::int32_t> origin = integer32(*dayOrigin);
    if (!when || detailValue != static_cast<std::int64_t>(SnapshotDetail::folders) || !thresholdValue || !count || !origin)
        return std::nullopt;
    header.date = *when;
    header.detail = SnapshotDetail::folders;
    header.threshold = *thresholdValue;
    header.rootPath = rootPath->get<std::string>();
    header.nodeCount = *count;
    header.dayOrigin = *origin;
    header.hasColors = hasColors->get<bool>();
    if (!readOptional(object, "volumeTotal", header.volumeTotal, integer)
        || !readOptional(object, "volumeAvailable", header.volumeAvailable, integer)
        || !readOptional(object, "restDays", header.restDays, dayList)
        || !readOptional(object, "coverage", header.coverage, pathList)
        || !readOptional(object, "timestamps", header.timestamps, timestampList))
        return std::nullopt;
    return header;
}

}
