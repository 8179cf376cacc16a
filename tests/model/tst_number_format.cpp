// SPDX-License-Identifier: Apache-2.0
#include "model/number_format.h"

#include <gtest/gtest.h>

#include <clocale>

using namespace quarbel;

TEST(NumberFormat, FixedDigitsRoundLikePrintf) {
    EXPECT_EQ(format(1234.5678, 2), "1234.57");
    EXPECT_EQ(format(2.5, 0), "2");
    EXPECT_EQ(format(3.5, 0), "4");
    EXPECT_EQ(format(-0.125, 2), "-0.12");
    EXPECT_EQ(format(7, 3), "7.000");
}

TEST(NumberFormat, IgnoresTheUsersLocale) {
    const char* previous = std::setlocale(LC_NUMERIC, nullptr);
    const std::string saved = previous ? previous : "C";
    if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr)
        GTEST_SKIP() << "de_DE.UTF-8 locale not installed";
    EXPECT_EQ(format(1.5, 1), "1.5");
    std::setlocale(LC_NUMERIC, saved.c_str());
}

TEST(NumberFormat, BytesAreBinaryWithDecimalLookingSuffixes) {
    EXPECT_EQ(formatBytes(1'073'741'824), "1.0 GB");
    EXPECT_EQ(formatBytes(10'737'418'240), "10 GB");
    EXPECT_EQ(formatBytes(536'870'912), "512 MB");
    EXPECT_EQ(formatBytes(0), "0 MB");
    EXPECT_EQ(formatBytes(1'073'741'823), "1024 MB");
}
