#include "tests/support/each_by_itself.h"
#include "tests/support/private_names.h"

int main(int argc, char** argv)
{
    return obtest::RunTests(argc, argv, obtest::TakePrivateNames, obtest::RemovePrivateNames);
}
