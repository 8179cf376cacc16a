// SPDX-License-Identifier: Apache-2.0
#include "sensors/smc_controller.h"

#include "sensors/plausible_temperature.h"

#include <bit>
#include <cstring>

uint32_t QLEncodeSMCKey(const char* key) {
    uint32_t encoded = 0;
    for (int i = 0; i < 4; ++i)
        encoded = (encoded << 8) | static_cast<uint8_t>(key[i]);
    return encoded;
}

void QLDecodeSMCType(uint32_t type, char out[5]) {
    for (int i = 0; i < 4; ++i)
        out[i] = static_cast<char>((type >> (24 - 8 * i)) & 0xFFu);
    out[4] = '\0';
}

bool QLDecodeSMCTemperature(const uint8_t* bytes, uint32_t size, const char* type, double* value) {
    const auto bigEndian16 = [bytes] { return static_cast<uint16_t>((bytes[0] << 8) | bytes[1]); };
    double decoded = 0;
    if (std::strcmp(type, "sp78") == 0 && size >= 2) {
        decoded = static_cast<int8_t>(bytes[0]) + bytes[1] / 256.0;
    } else if (std::strcmp(type, "flt ") == 0 && size >= 4) {
        const uint32_t bits = (uint32_t{bytes[0]} << 24) | (uint32_t{bytes[1]} << 16) |
                              (uint32_t{bytes[2]} << 8) | uint32_t{bytes[3]};
        decoded = std::bit_cast<float>(bits);
    } else if (std::strcmp(type, "fpe2") == 0 && size >= 2) {
        decoded = bigEndian16() / 4.0;
    } else if (std::strcmp(type, "ui16") == 0 && size >= 2) {
        decoded = bigEndian16();
    } else if (std::strcmp(type, "si16") == 0 && size >= 2) {
        decoded = static_cast<int16_t>(bigEndian16());
    } else {
        return false;
    }
    if (!quarbel::isPlausibleTemperature(decoded)) return false;
    *value = decoded;
    return true;
}

bool QLReadSMCKey(QLSMCConnection& connection, const char* key, uint8_t bytes[32], uint32_t* size,
                  char type[5]) {
    QLSMCParamBlock input{};
    QLSMCParamBlock output{};
    input.key = QLEncodeSMCKey(key);
    input.command = kQLSMCCommandReadKeyInfo;
    if (!connection.call(input, output) || output.result != 0) return false;
    const uint32_t dataSize = output.dataSize;
    if (dataSize < 1 || dataSize > sizeof(output.bytes)) return false;
    char dataType[5];
    QLDecodeSMCType(output.dataType, dataType);

    input = {};
    output = {};
    input.key = QLEncodeSMCKey(key);
    input.dataSize = dataSize;
    input.command = kQLSMCCommandReadBytes;
    if (!connection.call(input, output) || output.result != 0) return false;

    std::memcpy(bytes, output.bytes, dataSize);
    *size = dataSize;
    std::memcpy(type, dataType, sizeof(dataType));
    return true;
}

bool QLReadBestTemperature(QLSMCConnection& connection, const char* const* keys, size_t count,
                           double* value) {
    bool found = false;
    double best = 0;
    for (size_t i = 0; i < count; ++i) {
        uint8_t bytes[32];
        uint32_t size = 0;
        char type[5];
        double candidate = 0;
        if (!QLReadSMCKey(connection, keys[i], bytes, &size, type)) continue;
        if (!QLDecodeSMCTemperature(bytes, size, type, &candidate)) continue;
        if (!found || candidate > best) best = candidate;
        found = true;
    }
    if (found) *value = best;
    return found;
}

QLTemperatureReading QLReadSMCTemperatures(QLSMCConnection& connection) {
    QLTemperatureReading reading{0, 0, 0, 0};
    double value = 0;
    if (QLReadBestTemperature(connection, kQLCPUTemperatureKeys.data(), kQLCPUTemperatureKeys.size(),
                              &value)) {
        reading.cpu = value;
        reading.hasCPU = 1;
    }
    if (QLReadBestTemperature(connection, kQLGPUTemperatureKeys.data(), kQLGPUTemperatureKeys.size(),
                              &value)) {
        reading.gpu = value;
        reading.hasGPU = 1;
    }
    return reading;
}
