#include "Classification/RestBuckets.hpp"

namespace tarnwick {

std::unordered_map<NodeID, std::vector<BucketShare>> RestBuckets::shares(RestMode mode) const
{
    std::unordered_map<NodeID, std::vector<BucketShare>> result;
    for (const auto& [folder, folderParts] : parts) {
        for (const RestPart& part : folderParts) {
            if (part.mode == mode && part.bytes > 0)
                result[folder].push_back(BucketShare { part.key, part.bytes });
        }
    }
    return result;
}

}
