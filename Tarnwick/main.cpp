#include <cstdio>

int main()
{
    std::puts("Tarnwick");
    return 0;
}
