#pragma once

#include <csignal>
#include <cstdint>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace lumo::test {

/// Root passes every permission check. While this lives, the calling thread (and threads it
/// starts) gives up that override, so a folder's mode bits hold for it as for anyone.
class PermissionChecksApply {
public:
    PermissionChecksApply() {
        if (geteuid() != 0)
            return;
        if (syscall(SYS_capget, &m_header, m_saved) != 0)
            return;
        __user_cap_data_struct reduced[2] = {m_saved[0], m_saved[1]};
        constexpr std::uint32_t overrides =
            (1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH) | (1u << CAP_FOWNER);
        reduced[0].effective &= ~overrides;
        m_reduced = syscall(SYS_capset, &m_header, reduced) == 0;
    }
    ~PermissionChecksApply() {
        if (m_reduced)
            syscall(SYS_capset, &m_header, m_saved);
    }
    PermissionChecksApply(const PermissionChecksApply&) = delete;
    PermissionChecksApply& operator=(const PermissionChecksApply&) = delete;

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2]{};
    bool m_reduced = false;
};

/// While this lives, the process cannot make any regular file longer than `bytes`: a write
/// past that size fails half-way with EFBIG, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_saved);
        m_previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limited{bytes, m_saved.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_saved);
        std::signal(SIGXFSZ, m_previousHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_saved{};
    void (*m_previousHandler)(int) = SIG_DFL;
};

} // namespace lumo::test
