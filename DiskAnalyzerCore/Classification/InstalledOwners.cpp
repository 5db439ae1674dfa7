#include "Classification/InstalledOwners.hpp"

#include <memory>

namespace tarnwick::InstalledOwners {

const OwnerPlaces& places()
{
    // Both live as long as the process: the places refer to the index.
    static const OwnerIndex index = OwnerIndex::build(ApplicationRoots::current());
    static const OwnerPlaces places(index);
    return places;
}

}
