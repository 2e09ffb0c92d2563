#include "support/golden.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tests {

const std::filesystem::path kGolden = GOLDEN_DIRECTORY;
bool writes_golden() { return std::getenv("SWITCHMIB_WRITE_GOLDEN") != nullptr; }

void expect_golden(const std::filesystem::path& path, const std::string& text) {
    if (writes_golden()) {
        std::ofstream(path) << text;
        return;
    }
    std::ostringstream golden;
    golden << std::ifstream(path).rdbuf();
    EXPECT_EQ(text, golden.str()) << "tools/golden writes " << path << " again";
}

}  // namespace tests
