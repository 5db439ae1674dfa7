#pragma once

#include "Scanning/DescriptorBudget.hpp"

#include <unistd.h>

namespace tarnwick {

// A listed folder kept open, within the scan's descriptor budget, for its subfolders to be
// opened relative to it. Shared by the tasks of those subfolders; the last to let go closes
// it and gives its place in the budget back.
class FolderHandle {
public:
    FolderHandle(int descriptor, DescriptorBudget& budget)
        : m_descriptor(descriptor)
        , m_budget(budget)
    {
    }
    ~FolderHandle()
    {
        ::close(m_descriptor);
        m_budget.release();
    }
    FolderHandle(const FolderHandle&) = delete;
    FolderHandle& operator=(const FolderHandle&) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
    DescriptorBudget& m_budget;
};

}
