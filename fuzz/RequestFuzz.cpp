// libFuzzer entry for what arrives at the command line from outside: a request line from the
// socket and the words typed after the program's name. See RequestInvariants.hpp for what
// must hold; the sanitizers catch the rest.
#include "RequestInvariants.hpp"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (!tarnwick::RequestInvariants::hold(bytes))
        std::abort();
    return 0;
}
