// SPDX-License-Identifier: Apache-2.0
// A throw-away directory tree standing in for /sys or /proc in the sensor tests.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

namespace quarbel::testing {

class FakeTree {
  public:
    explicit FakeTree(const std::string& rows, const std::string& under = {}) : FakeTree() {
        writeRows(rows, under);
    }
    FakeTree() {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/quarbel-sensors-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
        root_ = pattern;
    }
    ~FakeTree() {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    FakeTree(const FakeTree&) = delete;
    FakeTree& operator=(const FakeTree&) = delete;

    const std::string& root() const { return root_; }
    std::string path(const std::string& relative) const { return root_ + "/" + relative; }

    // Writes `content` to `relative`, creating the folders above it.
    void write(const std::string& relative, const std::string& content) const {
        const std::filesystem::path file = path(relative);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
    }

    // Writes each of the blank-separated `path=content` rows below `under`; the content ends at the
    // next blank, so it holds none itself.
    void writeRows(const std::string& rows, const std::string& under = {}) const {
        std::istringstream in(rows);
        for (std::string row; in >> row;)
            write(under + row.substr(0, row.find('=')), row.substr(row.find('=') + 1));
    }

    // The whole of `relative`, empty when it cannot be read.
    std::string read(const std::string& relative) const {
        std::ifstream in(path(relative), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    void rename(const std::string& from, const std::string& to) const {
        std::filesystem::rename(path(from), path(to));
    }

  private:
    std::string root_;
};

} // namespace quarbel::testing
