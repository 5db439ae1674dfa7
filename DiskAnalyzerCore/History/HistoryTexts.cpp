#include "History/HistoryTexts.hpp"

#include "Support/ByteFormat.hpp"

namespace tarnwick::HistoryTexts {

std::string clearExplanation(std::int64_t storedBytes)
{
    return "Tarnwick deletes what it kept of earlier scans (" + ByteFormat::format(storedBytes)
        + "), including the record of each volume's space, so the next scan of each place has nothing to compare "
          "with. Your files aren't touched.";
}

std::string dayOfHistory(std::int64_t bytes)
{
    return std::string(dayOfHistoryPrefix) + ByteFormat::format(bytes);
}

}
