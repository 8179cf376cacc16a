// SPDX-License-Identifier: Apache-2.0
// Temperatures from a System Management Controller: key encoding, value decoding and
// the best-of-a-key-list rule, written against a small transport so that the logic is
// portable and testable. A platform transport (the IOKit user client of AppleSMC on
// macOS) only has to exchange one parameter block per call.
//
// Thread safety: every function here uses only its arguments and locals; a transport
// instance must not be shared between threads that call it at the same time.
#pragma once

#include "sensors/temperature.h"

#include <array>
#include <cstddef>
#include <cstdint>

// The parameter block exchanged with the controller's user client: 80 bytes, native
// byte order, the same layout for input and output.
struct QLSMCParamBlock {
    uint32_t key;              // encoded key, see QLEncodeSMCKey (input)
    uint8_t versionMajor;      // 0
    uint8_t versionMinor;      // 0
    uint8_t versionBuild;      // 0
    uint8_t versionReserved;   // 0
    uint16_t versionRelease;   // 0
    uint8_t padding0[2];       // 0
    uint16_t limitVersion;     // 0
    uint16_t limitLength;      // 0
    uint32_t cpuPowerLimit;    // 0
    uint32_t gpuPowerLimit;    // 0
    uint32_t memoryPowerLimit; // 0
    uint32_t dataSize;         // bytes; output of the info call, input of the read call
    uint32_t dataType;         // four characters packed big-endian; output of the info call
    uint8_t dataAttributes;    // unused
    uint8_t padding1[3];       // 0
    uint8_t result;            // 0 = success (output)
    uint8_t status;            // unused
    uint8_t command;           // kQLSMCCommandReadKeyInfo or kQLSMCCommandReadBytes
    uint8_t padding2;          // 0
    uint32_t data32;           // unused
    uint8_t bytes[32];         // value bytes on output of the read call
};
static_assert(sizeof(QLSMCParamBlock) == 80, "the controller expects an 80-byte block");
static_assert(offsetof(QLSMCParamBlock, dataSize) == 28 && offsetof(QLSMCParamBlock, dataType) == 32 &&
                  offsetof(QLSMCParamBlock, result) == 40 && offsetof(QLSMCParamBlock, command) == 42 &&
                  offsetof(QLSMCParamBlock, bytes) == 48,
              "parameter block layout");

inline constexpr uint8_t kQLSMCCommandReadKeyInfo = 9;
inline constexpr uint8_t kQLSMCCommandReadBytes = 5;

// One open connection to the controller. `call` performs a single user-client call
// (selector 2, 80 bytes in, 80 bytes out) and returns true when the call itself
// succeeded; the block's own `result` byte is checked by the caller.
class QLSMCConnection {
  public:
    virtual ~QLSMCConnection() = default;
    virtual bool call(const QLSMCParamBlock& input, QLSMCParamBlock& output) = 0;
};

// Keys tried for each sensor, in this order.
inline constexpr std::array<const char*, 8> kQLCPUTemperatureKeys = {"TC0P", "TC0E", "TC0F", "TC0D",
                                                                     "TC0H", "TCXC", "TCPU", "TCAD"};
inline constexpr std::array<const char*, 8> kQLGPUTemperatureKeys = {"TG0P", "TG0D", "TG0H", "TG0T",
                                                                     "TG1P", "TG1D", "TGPU", "TGDD"};

// `key` must point at four characters; the first lands in the most significant byte.
uint32_t QLEncodeSMCKey(const char* key);

// Writes the four characters of `type`, most significant byte first, and a zero byte.
void QLDecodeSMCType(uint32_t type, char out[5]);

// Decodes `size` value bytes of the given type ("sp78", "flt ", "fpe2", "ui16", "si16",
// compared exactly, all big-endian). True, with `*value` in degrees Celsius, only when
// the type is known, the size suffices and the value is plausible; `*value` is left
// alone otherwise.
bool QLDecodeSMCTemperature(const uint8_t* bytes, uint32_t size, const char* type, double* value);

// Reads one key: an info call for its size and type, then a read call for its bytes.
// On success `bytes` holds `*size` (1 to 32) value bytes and `type` the type text.
bool QLReadSMCKey(QLSMCConnection& connection, const char* key, uint8_t bytes[32], uint32_t* size,
                  char type[5]);

// Tries every key and keeps the highest plausible value. True, with `*value` set,
// when at least one key gave a plausible value; `*value` is left alone otherwise.
bool QLReadBestTemperature(QLSMCConnection& connection, const char* const* keys, size_t count, double* value);

// Both key lists over one open connection: the CPU and GPU channels of a reading.
QLTemperatureReading QLReadSMCTemperatures(QLSMCConnection& connection);
