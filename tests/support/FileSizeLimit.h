#pragma once

#include <sys/resource.h>

#include <csignal>

// A full disk for this process while it lives: writes past `bytes` fail with EFBIG (the signal
// that would kill the process is ignored, as the application ignores it). The limit before is
// back when it goes.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        m_applied = getrlimit(RLIMIT_FSIZE, &m_before) == 0;
        rlimit limited = m_before;
        limited.rlim_cur = bytes;
        m_applied = m_applied && setrlimit(RLIMIT_FSIZE, &limited) == 0;
    }
    ~FileSizeLimit() { lift(); }

    bool applied() const { return m_applied; }
    void lift()
    {
        if (m_applied)
            setrlimit(RLIMIT_FSIZE, &m_before);
        m_applied = false;
    }

private:
    rlimit m_before{};
    bool m_applied = false;
};
