#pragma once

// Goes before every source that mutate.py puts faults into. `a < b` becomes `(tw2_fault<17>() ? (a <= b) : (a < b))`:
// the environment variable TW2_FAULT chooses which fault there is.

// What compilers warn of in code with a fault is for the tests to find.
#pragma GCC diagnostic ignored "-Warray-bounds"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wdiv-by-zero"
#pragma GCC diagnostic ignored "-Wempty-body"
#pragma GCC diagnostic ignored "-Wextra"
#pragma GCC diagnostic ignored "-Wfloat-conversion"
#pragma GCC diagnostic ignored "-Wint-in-bool-context"
#pragma GCC diagnostic ignored "-Wlogical-op"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wnarrowing"
#pragma GCC diagnostic ignored "-Wparentheses"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wtautological-compare"
#pragma GCC diagnostic ignored "-Wtype-limits"
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wunused-but-set-parameter"
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wunused-value"
#pragma GCC diagnostic ignored "-Wunused-variable"
// An array whose size is chosen at run time is another kind of array.
#pragma GCC diagnostic error "-Wvla"

#include <fcntl.h>
#include <sys/mman.h>

#include <cstdlib>
#include <type_traits>

inline const int tw2_chosenFault = std::getenv("TW2_FAULT") ? std::atoi(std::getenv("TW2_FAULT")) : -1;

// A mark for each fault, in a file that a test and the programs that it starts share: 1 for one that is compiled at
// all, 3 for one that they came by.
inline char* tw2_openMarks()
{
    const char* name = std::getenv("TW2_FAULT_MARKS");
    const int file = name ? ::open(name, O_RDWR) : -1;
    const std::size_t size = 1 << 16;
    return file < 0 ? nullptr : static_cast<char*>(::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
}
inline char* tw2_getMarks()
{
    static char* const marks = tw2_openMarks();
    return marks;
}
inline char* const tw2_faultMarks = tw2_getMarks();

// Initialised where the fault is compiled: not in a template that nobody uses, nor in what is for another system.
template <int number>
inline const bool tw2_isPresent = tw2_getMarks() && (tw2_getMarks()[number] |= 1);

template <int number>
inline bool tw2_fault()
{
    static_cast<void>(tw2_isPresent<number>);
    if (tw2_faultMarks)
    {
        tw2_faultMarks[number] = 3;
    }
    return number == tw2_chosenFault;
}

// In what may be constant. Where a compiler evaluates it there is no fault.
template <int number>
constexpr bool tw2_faultAtRunTime()
{
    if (std::is_constant_evaluated())
    {
        return false;
    }
    else
    {
        return tw2_fault<number>();
    }
}
