#pragma once

#include <string_view>

namespace tarnwick {

// Which folder extensions make a folder a package: shown as one item, listed and sized
// but not opened in the map. There is no system type registry to ask on Linux, so this is
// the classifier's package extensions plus the usual bundle types.
namespace PackageTypes {

// The extension must already be lower-case, without its dot.
bool isDeclaredPackageExtension(std::string_view lowercasedExtension);

}

}
