#pragma once

#include <cstdint>
#include <istream>
#include <optional>

/// The memory that is free for new processes, in bytes, from the text of /proc/meminfo.
std::optional<std::uint64_t> availableMemory(std::istream& meminfo);

/// Limits what this process may allocate to the memory that the machine has free at the moment, so
/// that a result that outgrows it ends the run with `std::bad_alloc` and does not drag the machine
/// into swapping. Leaves a limit that is lower as it is, and does nothing where the system does not
/// tell, or in a build for the address sanitizer, which reserves more than any machine has.
void limitMemory();
