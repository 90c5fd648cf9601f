// For tests that need no names of their own.
#include "tests/support/each_by_itself.h"

int main(int argc, char** argv)
{
    return obtest::RunTests(
        argc, argv, [] { return true; }, [] {});
}
