#include "tools/progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace tools
{
Progress::Progress(std::string what, unsigned int total)
    : m_strWhat(std::move(what)),
      m_uiTotal(total),
      m_bTerminal(isatty(STDERR_FILENO) != 0),
      m_start(std::chrono::steady_clock::now())
{
}

void Progress::step()
{
    ++m_uiDone;
    if (m_bTerminal && (m_bShown || std::chrono::steady_clock::now() - m_start > std::chrono::seconds(1)))
    {
        m_bShown = true;
        std::fprintf(stderr, "\r%s %u of %u", m_strWhat.c_str(), m_uiDone, m_uiTotal);
    }
}

void Progress::finish()
{
    if (m_bShown)
    {
        std::fprintf(stderr, "\r\033[K");
        m_bShown = false;
    }
}
}  // namespace tools
