#include "tests/support/pose_hash.h"

#include <cstdio>
#include <cstdlib>

// Prints the pose hash of this build of the library, for machines that the tests do not run on.
int main(int argc, char** argv)
{
    const unsigned int rounds = argc > 1 ? static_cast<unsigned int>(std::strtoul(argv[1], nullptr, 10)) : 20;
    std::printf("%016llx\n", static_cast<unsigned long long>(support::PoseHash::run(rounds)));
    return 0;
}
