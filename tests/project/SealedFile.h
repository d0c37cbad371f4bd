#pragma once

#include <string>

/// The contents text of a project file.
[[nodiscard]] std::string contents_of(const std::string& project);

/// The file with other contents, all checksums and sizes of its first lines set to fit: what somebody could write by
/// intention.
[[nodiscard]] std::string with_contents(const std::string& project, const std::string& contents, int format = 2);
