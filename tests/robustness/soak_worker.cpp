// One caller of the soak: soak_worker NUMBER END. Built for both ABIs.
#include <cstdlib>

#include "tests/robustness/soak_board.h"
#include "tests/support/private_names.h"

int main(int count, char** arguments)
{
    if (count != 3 || !obtest::TakePrivateNames())
        return 2;
    return obtest::Work(static_cast<uint32_t>(strtoul(arguments[1], nullptr, 10)),
                        strtoull(arguments[2], nullptr, 10));
}
