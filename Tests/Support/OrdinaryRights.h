#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <stdexcept>

/// Gives up what lets root write to everything, so that modes count; for a child process. There is no way back.
inline void keepOrdinaryRights() {
  __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  __user_cap_data_struct none[2] = {};
  if (::syscall(SYS_capset, &header, none) != 0) throw std::runtime_error("cannot give up rights");
}
