#include "Support/MappedColumn.hpp"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace tarnwick::MappedMemory {

std::size_t pageRounded(std::size_t bytes)
{
    static const std::size_t page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (bytes + page - 1) / page * page;
}

void* reallocate(void* old, std::size_t oldBytes, std::size_t newBytes)
{
    void* memory;
    if (old == nullptr)
        memory = mmap(nullptr, newBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    else
        memory = mremap(old, pageRounded(oldBytes), newBytes, MREMAP_MAYMOVE);
    if (memory == MAP_FAILED) {
        std::fprintf(stderr, "tarnwick: out of memory (asked for %zu bytes)\n", newBytes);
        std::abort();
    }
    return memory;
}

void release(void* memory, std::size_t bytes)
{
    munmap(memory, bytes);
}

}
