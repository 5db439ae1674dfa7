#include "Scanning/DirectoryListing.hpp"

#include <unistd.h>

namespace tarnwick {

DirectoryHandle::~DirectoryHandle()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
}

}
