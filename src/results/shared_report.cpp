// SPDX-License-Identifier: Apache-2.0
#include "results/shared_report.h"

#include <openssl/evp.h>

#include <array>
#include <cstdio>
#include <optional>

namespace quarbel {
namespace {

constexpr std::string_view kOpening =
    "<pre id=\"quarbel-report\" hidden data-encoding=\"base64\" data-sha256=\"";
constexpr std::string_view kClosing = "</pre>";
constexpr std::size_t kLineLength = 76;

std::string base64(std::string_view bytes) {
    std::string encoded(4 * ((bytes.size() + 2) / 3) + 1, '\0');
    const int length =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    encoded.resize(static_cast<std::size_t>(length));
    // Lines keep the page readable in an editor.
    std::string lines;
    for (std::size_t i = 0; i < encoded.size(); i += kLineLength)
        lines.append(encoded, i, kLineLength).push_back('\n');
    return lines;
}

std::optional<std::string> unbase64(std::string_view text) {
    std::string compact;
    for (char c : text)
        if (c != '\n' && c != '\r' && c != ' ') compact.push_back(c);
    if (compact.size() % 4 != 0) return std::nullopt;
    std::string decoded(compact.size() / 4 * 3, '\0');
    const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(decoded.data()),
                                       reinterpret_cast<const unsigned char*>(compact.data()),
                                       static_cast<int>(compact.size()));
    if (length < 0) return std::nullopt;
    // EVP_DecodeBlock counts the padding as zero bytes.
    std::size_t padding = 0;
    while (padding < 2 && padding < compact.size() && compact[compact.size() - 1 - padding] == '=')
        ++padding;
    decoded.resize(static_cast<std::size_t>(length) - padding);
    return decoded;
}

} // namespace

std::string sha256Hex(std::string_view bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr);
    std::string hex;
    char pair[3];
    for (unsigned int i = 0; i < length; ++i) {
        std::snprintf(pair, sizeof pair, "%02x", digest[i]);
        hex += pair;
    }
    return hex;
}

std::string embedReport(std::string page, std::string_view reportText) {
    std::string block = std::string(kOpening) + sha256Hex(reportText) + "\">\n" + base64(reportText) +
                        std::string(kClosing) + "\n";
    const auto body = page.rfind("</body>");
    page.insert(body == std::string::npos ? page.size() : body, block);
    return page;
}

bool isSharedPage(std::string_view text) { return text.find(kOpening) != std::string_view::npos; }

SharedReport embeddedReport(std::string_view page) {
    const auto opening = page.find(kOpening);
    if (opening == std::string_view::npos) return {{}, "holds no Quarbel report"};
    const auto hashStart = opening + kOpening.size();
    const auto hashEnd = page.find("\">", hashStart);
    const auto closing = page.find(kClosing, hashStart);
    if (hashEnd == std::string_view::npos || closing == std::string_view::npos || hashEnd > closing)
        return {{}, "holds a damaged Quarbel report"};
    const std::string_view hash = page.substr(hashStart, hashEnd - hashStart);
    auto report = unbase64(page.substr(hashEnd + 2, closing - hashEnd - 2));
    if (!report) return {{}, "holds a damaged Quarbel report"};
    if (sha256Hex(*report) != hash)
        return {{}, "was altered after it was shared: its report does not match the SHA-256 it carries"};
    return {std::move(*report), {}};
}

} // namespace quarbel
