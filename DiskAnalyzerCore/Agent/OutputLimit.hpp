#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Every answer, as text and as pretty JSON, stays below 8 KB so that an agent can take it in
// whole; handlers that list things shrink the list and say so with these texts.
namespace tarnwick::OutputLimit {

inline constexpr std::size_t bytes = 8'192;

inline constexpr std::string_view summaryTooLarge = "This summary cannot fit within the 8 KB output limit.";
inline constexpr std::string_view findPathTooLong = "One matching path is too long to return within the 8 KB output limit.";
inline constexpr std::string_view typesGroupTooLarge = "This group cannot fit within 8 KB.";
inline constexpr std::string_view typesPathTooLong = "This path cannot fit within 8 KB.";
// Any other answer that came out too large.
inline constexpr std::string_view answerTooLarge = "This answer cannot fit within the 8 KB output limit.";

inline std::string placesLimited(int perGroup)
{
    return "Places limited to " + std::to_string(perGroup) + " per group to fit 8 KB; narrow PATH for detail.";
}

inline std::string extremesLimited(int count)
{
    return "Extremes limited to " + std::to_string(count) + " to fit 8 KB; narrow PATH for detail.";
}

}
