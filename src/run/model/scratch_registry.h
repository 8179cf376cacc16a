// Scratch directories that exist right now, so that a process forced to exit at once
// can still remove them. Thread-safe.
#pragma once

#include <string>

namespace quarbel {

void registerScratchDirectory(const std::string& path);
void unregisterScratchDirectory(const std::string& path);

// Removes every registered directory with its contents; for a last-moment exit path.
void removeRegisteredScratchDirectories() noexcept;

} // namespace quarbel
