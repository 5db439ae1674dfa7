#pragma once

#include <string_view>

namespace tarnwick::FileSystemTypes {

// Types served over a network: refused, because a scan would be slow and its sizes unreliable.
bool isNetwork(std::string_view type);
// Types that hold no disk data of their own (kernel views, automounters, user-space
// file systems): refused, because their sizes describe nothing on a local disk.
bool isVirtual(std::string_view type);

}
