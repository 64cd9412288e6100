#include "cals/cals_records.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

namespace vellim {
namespace {

constexpr std::string_view kNoText = "NONE";
constexpr uint32_t kFirstTrimmedByte = 3;
constexpr int kDecimal = 10;

bool IsFiller(char byte) {
    return byte == ' ' || byte == '\0';
}

bool IsBlank(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

bool IsDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

std::string_view RecordAt(const char* record) {
    return {record, CALS_RECORD_BYTES};
}

// Takes a number off the front of `text`: blanks, a sign, digits. Where there is no digit nothing
// is taken, the blanks neither.
int32_t TakeNumber(std::string_view& text) {
    using Limits = std::numeric_limits<int32_t>;
    size_t at = 0;
    while (at < text.size() && IsBlank(text[at]))
        at++;
    const bool isNegative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) at++;
    if (at == text.size() || !IsDigit(text[at])) return 0;
    int64_t value = 0;
    for (; at < text.size() && IsDigit(text[at]); at++)
        value = std::min<int64_t>(value * kDecimal + (text[at] - '0'), int64_t{Limits::max()} + 1);
    text.remove_prefix(at);
    return static_cast<int32_t>(isNegative ? -value : std::min<int64_t>(value, Limits::max()));
}

void WriteValue(char* header, const char* key, std::string_view value) {
    char* record = FindCALSRecord(header, key);
    if (record == nullptr) return;
    const size_t keyBytes = std::strlen(key);
    const size_t kept = std::min(value.size(), kLastByteOfRecord - keyBytes);
    std::memcpy(record + keyBytes, value.data(), kept);
    std::fill(record + keyBytes + kept, record + CALS_RECORD_BYTES, ' ');
}

}  // namespace

void TrimCALSRecord(char* record) {
    uint32_t end = kLastByteOfRecord;
    while (end > kFirstTrimmedByte && IsFiller(record[end - 1]))
        end--;
    if (end == kFirstTrimmedByte) {
        record[0] = ' ';
        record[1] = '\0';
        return;
    }
    const char last = record[end - 1];
    record[last == '\r' || last == '\n' ? end - 1 : end] = '\0';
}

bool ReadCALSNumbers(char* header, const char* key, std::span<int32_t> numbers) {
    const char* record = FindCALSRecord(header, key);
    if (record == nullptr) return false;
    std::string_view text = RecordAt(record).substr(std::strlen(key));
    for (int32_t& number : numbers) {
        number = TakeNumber(text);
        text.remove_prefix(std::min<size_t>(text.size(), 1));
    }
    return true;
}

const char* ReadCALSText(char* header, const char* key, char* texts, uint32_t& offset) {
    const char* record = FindCALSRecord(header, key);
    if (record == nullptr) return nullptr;
    std::array<char, CALS_RECORD_BYTES> trimmed{};
    std::memcpy(trimmed.data(), record, kLastByteOfRecord);
    TrimCALSRecord(trimmed.data());
    const std::string_view whole = trimmed.data();
    const size_t keyBytes = std::strlen(key);
    if (whole.size() <= keyBytes) return nullptr;
    const std::string_view value = whole.substr(keyBytes);
    char* text = texts + offset;
    std::memcpy(text, value.data(), value.size());
    text[value.size()] = '\0';
    offset += static_cast<uint32_t>(value.size() + 1);
    return text;
}

void WriteCALSText(char* header, const char* key, const char* text) {
    WriteValue(header, key, text != nullptr ? std::string_view(text) : kNoText);
}

void WriteCALSNumbers(char* header, const char* key, int32_t digits,
                      std::span<const int32_t> numbers) {
    std::array<char, CALS_RECORD_BYTES> text{};
    size_t length = 0;
    for (const int32_t number : numbers) {
        const char* format = length == 0 ? "%0*d" : ",%0*d";
        const int written =
            std::snprintf(text.data() + length, text.size() - length, format, digits, number);
        length += static_cast<size_t>(written);
    }
    WriteValue(header, key, text.data());
}

}  // namespace vellim

char* FindCALSRecord(char* header, const char* key) {
    if (header == nullptr || key == nullptr) return nullptr;
    for (uint32_t i = 0; i < CALS_RECORD_COUNT; i++) {
        char* record = header + size_t{i} * CALS_RECORD_BYTES;
        if (!vellim::IsFiller(*record) && vellim::RecordAt(record).starts_with(key)) return record;
    }
    return nullptr;
}
