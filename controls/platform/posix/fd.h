// POSIX file descriptors owned through the common RAII template.
#pragma once

#include <unistd.h>

#include "platform/unique_handle.h"

namespace uc {
struct FdTraits {
    using Type = int;
    static int Invalid() { return -1; }
    static void Close(int fd) { ::close(fd); }
};
using UniqueFd = UniqueHandle<FdTraits>;
}  // namespace uc
