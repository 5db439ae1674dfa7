#pragma once

#include "Classification/TimeZone.hpp"

namespace tarnwick::fixtures {

// A zone whose offset changes once, at a given instant (seconds since 1970): enough to put a
// daylight-saving jump exactly where a test wants it.
class OneTransitionZone final : public TimeZone {
public:
    OneTransitionZone(std::int64_t transition, std::int64_t before, std::int64_t after)
        : m_transition(transition)
        , m_before(before)
        , m_after(after)
    {
    }
    [[nodiscard]] std::int64_t offsetFromGMT(std::int64_t unixSeconds) const override
    {
        return unixSeconds < m_transition ? m_before : m_after;
    }

private:
    std::int64_t m_transition, m_before, m_after;
};

}
