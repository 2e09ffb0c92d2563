// Files under tests/golden, which hold what the library is known to do.
//
// With SWITCHMIB_WRITE_GOLDEN in the environment (tools/golden) they are written in place of being compared.
#pragma once

#include <filesystem>
#include <string>

namespace tests {

extern const std::filesystem::path kGolden;  // their directory
bool writes_golden();
void expect_golden(const std::filesystem::path& path, const std::string& text);

}  // namespace tests
