#pragma once

#include <chrono>
#include <string>

namespace tools
{
/// A line on standard error that counts up, shown when that is a terminal and the work takes longer than a second.
class Progress
{
public:
    Progress(std::string what, unsigned int total);
    /// One more is done.
    void step();
    /// Takes the line away.
    void finish();

private:
    std::string m_strWhat;
    unsigned int m_uiTotal;
    unsigned int m_uiDone = 0;
    bool m_bTerminal;
    bool m_bShown = false;
    std::chrono::steady_clock::time_point m_start;
};
}  // namespace tools
