// SPDX-License-Identifier: Apache-2.0
#include "sensors/smc_controller.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace {

// A controller that answers the two calls the way the SMC user client does.
class FakeController : public QLSMCConnection {
  public:
    struct Key {
        std::string type;           // four characters
        std::vector<uint8_t> bytes; // value bytes
        uint32_t declaredSize = 0;  // 0 = bytes.size()
        uint8_t readResult = 0;     // result byte of the read call
    };

    void add(const std::string& key, Key entry) {
        if (entry.declaredSize == 0) entry.declaredSize = static_cast<uint32_t>(entry.bytes.size());
        keys_[QLEncodeSMCKey(key.c_str())] = std::move(entry);
    }
    void addCelsius(const std::string& key, double celsius) { // as an "fpe2" value
        const auto quarters = static_cast<uint16_t>(celsius * 4);
        add(key, {"fpe2", {static_cast<uint8_t>(quarters >> 8), static_cast<uint8_t>(quarters & 0xFF)}});
    }

    bool call(const QLSMCParamBlock& input, QLSMCParamBlock& output) override {
        ++calls;
        if (failEveryCall) return false;
        const auto found = keys_.find(input.key);
        if (found == keys_.end()) {
            output.result = 0x84; // key not found
            return true;
        }
        const Key& key = found->second;
        if (input.command == kQLSMCCommandReadKeyInfo) {
            output.dataSize = key.declaredSize;
            output.dataType = QLEncodeSMCKey(key.type.c_str());
        } else if (input.command == kQLSMCCommandReadBytes) {
            requestedSizes.push_back(input.dataSize);
            output.result = key.readResult;
            std::memcpy(output.bytes, key.bytes.data(), std::min<size_t>(key.bytes.size(), 32));
        } else {
            output.result = 0x82; // unknown command
        }
        return true;
    }

    int calls = 0;
    bool failEveryCall = false;
    std::vector<uint32_t> requestedSizes;

  private:
    std::map<uint32_t, Key> keys_;
};

std::optional<double> decode(const char* type, std::vector<uint8_t> bytes) {
    double value = -999;
    if (!QLDecodeSMCTemperature(bytes.data(), static_cast<uint32_t>(bytes.size()), type, &value)) {
        EXPECT_EQ(value, -999) << "a failed decode must leave the value alone";
        return std::nullopt;
    }
    return value;
}

std::vector<uint8_t> floatBytes(float value) {
    const auto bits = std::bit_cast<uint32_t>(value);
    return {static_cast<uint8_t>(bits >> 24), static_cast<uint8_t>(bits >> 16),
            static_cast<uint8_t>(bits >> 8), static_cast<uint8_t>(bits)};
}

std::tuple<int, double, int, double> channels(const QLTemperatureReading& r) {
    return {r.hasCPU, r.cpu, r.hasGPU, r.gpu};
}

} // namespace

TEST(SMCKeys, EncodeFirstCharacterMostSignificantAndDecodeBack) {
    EXPECT_EQ(QLEncodeSMCKey("TC0P"), 0x54433050u);
    char type[5] = {'x', 'x', 'x', 'x', 'x'};
    QLDecodeSMCType(0x73703738u, type);
    EXPECT_STREQ(type, "sp78");
    QLDecodeSMCType(QLEncodeSMCKey("flt "), type);
    EXPECT_STREQ(type, "flt ");
}

// Only finite values strictly between -40 and 140; bytes past the type's width are ignored, and the
// trailing blank of "flt " is part of the type.
TEST(SMCDecode, EveryTypeBigEndianPlausibleValuesOnly) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(),
                    kInf = std::numeric_limits<float>::infinity();
    const struct {
        const char* type;
        std::vector<uint8_t> bytes;
        std::optional<double> celsius;
    } cases[] = {
        {"sp78", {0x2F, 0x80, 0x99}, 47.5},       {"sp78", {0xFF, 0x00}, -1.0},
        {"sp78", {0xD8, 0x00}, std::nullopt},     {"sp78", {0xD8, 0x01}, -40.0 + 1.0 / 256},
        {"fpe2", {0x02, 0x2F}, 139.75},           {"ui16", {0x00, 0x8B}, 139.0},
        {"ui16", {0x00, 0x8C}, std::nullopt},     {"si16", {0xFF, 0xFE}, -2.0},
        {"si16", {0xFF, 0xD8}, std::nullopt},     {"flt ", floatBytes(61.7f), static_cast<double>(61.7f)},
        {"flt ", floatBytes(kNaN), std::nullopt}, {"flt ", floatBytes(-kInf), std::nullopt},
        {"flt", floatBytes(45.0f), std::nullopt}, {"SP78", {0x2F, 0x80}, std::nullopt},
        {"sp78", {0x2F}, std::nullopt},           {"flt ", {0x42, 0x34, 0x00}, std::nullopt}};
    for (const auto& c : cases)
        EXPECT_EQ(decode(c.type, c.bytes), c.celsius) << c.type << " " << c.bytes.size();
}

TEST(SMCReadKey, ReadsSizeAndTypeThenExactlyThatManyBytesOrFails) {
    FakeController controller;
    controller.add("TC0P", {"sp78", {0x2F, 0x80}});
    controller.add("FULL", {"flt ", std::vector<uint8_t>(32, 0x41)});
    controller.add("ZERO", {"sp78", {}});
    controller.add("HUGE", {"sp78", {0x2F, 0x80}, 33});
    controller.add("NOPE", {"sp78", {0x2F, 0x80}, 0, 0x85});
    uint8_t bytes[32] = {};
    uint32_t size = 0;
    char type[5] = {};
    ASSERT_TRUE(QLReadSMCKey(controller, "TC0P", bytes, &size, type));
    EXPECT_EQ(std::tuple(size, std::string(type), bytes[0], bytes[1], controller.calls),
              std::tuple(2u, "sp78", 0x2F, 0x80, 2));
    EXPECT_TRUE(QLReadSMCKey(controller, "FULL", bytes, &size, type));
    EXPECT_EQ(controller.requestedSizes, (std::vector<uint32_t>{2, 32}));
    // Sizes of 0 or above 32 fail without a read call; so do absent keys and refused reads.
    for (const char* key : {"ZERO", "HUGE", "MISS", "NOPE"})
        EXPECT_FALSE(QLReadSMCKey(controller, key, bytes, &size, type)) << key;
    EXPECT_EQ(controller.requestedSizes.size(), 3u);
    controller.failEveryCall = true;
    EXPECT_FALSE(QLReadSMCKey(controller, "TC0P", bytes, &size, type));
}

TEST(SMCBestTemperature, HighestPlausibleValueOfTheWholeListOrTheValueLeftAlone) {
    FakeController controller;
    controller.addCelsius("TC0P", 52.0);
    controller.addCelsius("TC0D", 61.5);
    controller.addCelsius("TCPU", 145.0); // implausible, though the highest
    controller.add("TCXC", {"xxxx", {0x30, 0x00}});
    double value = 0;
    ASSERT_TRUE(QLReadBestTemperature(controller, kQLCPUTemperatureKeys.data(), kQLCPUTemperatureKeys.size(),
                                      &value));
    EXPECT_EQ(value, 61.5);
    // Every key is tried: two calls for each of the four present keys, one for the four absent.
    EXPECT_EQ(controller.calls, 4 * 2 + 4);

    FakeController hot;
    hot.addCelsius("TC0P", 140.0);
    value = 7;
    EXPECT_FALSE(
        QLReadBestTemperature(hot, kQLCPUTemperatureKeys.data(), kQLCPUTemperatureKeys.size(), &value));
    EXPECT_EQ(value, 7);
}

TEST(SMCReading, FillsEachChannelFromItsOwnListWithinTheCallBudget) {
    FakeController controller;
    controller.addCelsius("TC0E", 48.25);
    controller.addCelsius("TG0P", 39.0); // a GPU key must not leak into the CPU channel
    controller.addCelsius("TG1D", 44.0);
    EXPECT_EQ(channels(QLReadSMCTemperatures(controller)), std::tuple(1, 48.25, 1, 44.0));
    EXPECT_LE(controller.calls, 32);

    FakeController cpuOnly;
    cpuOnly.addCelsius("TCAD", 70.0);
    EXPECT_EQ(channels(QLReadSMCTemperatures(cpuOnly)), std::tuple(1, 70.0, 0, 0.0));
    FakeController silent;
    silent.failEveryCall = true;
    EXPECT_EQ(channels(QLReadSMCTemperatures(silent)), std::tuple(0, 0.0, 0, 0.0));
}
