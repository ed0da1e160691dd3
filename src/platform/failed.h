#pragma once

#include <cerrno>

namespace platform {

// The result of a call that fails with this error number.
inline int failed(int error) {
    errno = error;
    return -1;
}

} // namespace platform
