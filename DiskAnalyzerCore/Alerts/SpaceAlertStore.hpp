#pragma once

#include "Alerts/AlertError.hpp"
#include "Alerts/AlertReading.hpp"
#include "Alerts/SpaceAlert.hpp"

#include <expected>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick {

class UserDefaults;

// The user's alerts, kept in the user defaults: the array of alerts under "SpaceAlerts" and the
// ids already notified, sorted, under "SpaceAlertsNotified". The app and the command line both
// change them, so every change reads the latest settings under the defaults' lock and writes
// both keys in one go. A stored alert that cannot be decoded (damaged, or of a kind a later
// version added) is reported and written back as it was, never dropped.
class SpaceAlertStore {
public:
    static constexpr std::string_view alertsKey = "SpaceAlerts";
    static constexpr std::string_view notifiedKey = "SpaceAlertsNotified";

    // Whether a place is a disk (given by its mount point) or a folder; the caller knows the
    // mounts.
    enum class PlaceKind { disk, folder };

    struct Contents {
        std::vector<SpaceAlert> alerts; // in the order they were added
        std::set<std::string> notified;
        std::vector<SpaceAlert::DecodingError> problems; // one per stored alert that can't be read
    };

    struct Added {
        SpaceAlert alert;
        bool replaced = false; // an alert of the same kind (and period) had another limit
    };

    explicit SpaceAlertStore(UserDefaults& defaults);

    [[nodiscard]] Contents contents() const;
    [[nodiscard]] std::vector<SpaceAlert> alerts() const { return contents().alerts; }

    // Sets a limit on a place: replaces the limit of the place's alert of the same kind (for
    // growth, of the same kind and period), else appends a new alert. A replaced limit re-arms
    // the alert, so that passing the new limit notifies.
    std::expected<Added, AlertError> add(std::string_view path, PlaceKind kind, SpaceAlert::Condition condition);

    // Removes the alert with this id, full or short, or else every alert of this place.
    std::expected<std::vector<SpaceAlert>, AlertError> remove(std::string_view idOrPlace);

    // Applies the re-arming rule to the readings (keyed by alert id), saves the notified set
    // and returns the ids to notify now.
    std::expected<std::vector<std::string>, AlertError> notify(const std::map<std::string, AlertReading>& readings);

    // A place as alerts keep it: the path without trailing slashes (except the root's).
    static std::string normalizedPlace(std::string_view path);

private:
    UserDefaults& m_defaults;
};

}
