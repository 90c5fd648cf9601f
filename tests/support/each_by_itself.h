// A process for each test of a program that is started once. Under the sanitizers the start of a
// program with hundreds of tests takes longer than nearly all of them.
#pragma once

namespace obtest {

// What a test program's main() returns. Between begin(), which says whether there can be tests at all,
// and end() run the tests that --gtest_filter names. With --each-by-itself SECONDS all run, each in a
// process of its own, forked from this one, for so long at most, with an end() behind each; what it
// writes is shown when it does not pass. One line for each says how it ended, the last one how many
// there were.
int RunTests(int argc, char** argv, bool (*begin)(), void (*end)());

}  // namespace obtest
