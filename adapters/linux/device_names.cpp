// SPDX-License-Identifier: MIT
#include "adapters/linux/device_names.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "OSAdapt.h"

namespace {

constexpr size_t kMaxText = OS_ADAPT_DEVICE_TEXT_SIZE - 1;

struct Character {
    uint32_t code = 0;
    size_t length = 0; // 0: not UTF-8
};

size_t SequenceLength(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xc2 || first > 0xf4) {
        return 0;
    }
    return first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

bool IsScalar(uint32_t code, size_t length) {
    constexpr std::array<uint32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
    return code >= kLeast.at(length) && code <= 0x10ffff && (code < 0xd800 || code > 0xdfff);
}

Character CharacterAt(const std::string& text, size_t at) {
    const auto first = static_cast<unsigned char>(text[at]);
    const size_t length = SequenceLength(first);
    if (length == 0 || at + length > text.size()) {
        return {};
    }
    uint32_t code = length == 1 ? first : first & (0x7fU >> length);
    for (size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[at + i]);
        if ((byte & 0xc0U) != 0x80) {
            return {};
        }
        code = code << 6U | (byte & 0x3fU);
    }
    return IsScalar(code, length) ? Character{code, length} : Character{};
}

// Control characters, also those above ASCII, line separators, and what turns the direction of text.
bool Steers(uint32_t code) {
    return code < 0x20 || (code >= 0x7f && code < 0xa0) || (code >= 0x200b && code <= 0x200f) ||
           (code >= 0x2028 && code <= 0x202e) || (code >= 0x2060 && code <= 0x206f) ||
           code == 0xfeff;
}

std::string WithoutOuterBlanks(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

// "FT232R USB UART": the chip's maker says what kind of thing it is, which nobody repeats.
std::string WithoutGenericTail(const std::string& product) {
    for (const char* tail : {" USB to UART Bridge Controller", " USB to UART Bridge",
                             " USB-to-Serial", " USB to Serial", " USB UART"}) {
        if (EndsWith(product, tail)) {
            return product.substr(0, product.size() - std::string(tail).size());
        }
    }
    return product;
}

// "Arduino (www.arduino.cc)"
std::string WithoutAddress(const std::string& vendor) {
    const size_t at = vendor.find(" (www.");
    return at == std::string::npos ? vendor : vendor.substr(0, at);
}

std::string Join(const std::string& left, const std::string& right) {
    return left.empty() || right.empty() ? left + right : left + " " + right;
}

std::string KindName(const PortFacts& facts) {
    if (facts.bus == "usb") {
        return "USB device " + facts.vendorId + ":" + facts.productId;
    }
    return facts.bus == "bluetooth" ? "" : "Serial port";
}

// Without the serial number.
std::string ModelName(const PortFacts& facts) {
    const std::string vendor = WithoutOuterBlanks(WithoutAddress(facts.vendor));
    std::string product = WithoutOuterBlanks(WithoutGenericTail(facts.product));
    if (product.empty()) {
        product = KindName(facts);
    }
    return StartsWith(product, vendor) ? product : Join(vendor, product);
}

std::string Value(const std::string& text) {
    std::string value = CleanText(text, kMaxText);
    std::replace(value.begin(), value.end(), ' ', '_');
    return value;
}

std::string Fact(const char* key, const std::string& value) {
    return value.empty() ? "" : std::string(key) + "=" + Value(value);
}

} // namespace

std::string CleanText(const std::string& text, size_t maxBytes) {
    std::string clean;
    for (size_t at = 0; at < text.size();) {
        const Character character = CharacterAt(text, at);
        const size_t length = std::max<size_t>(character.length, 1);
        const bool shown = character.length > 0 && !Steers(character.code);
        const std::string piece = shown ? text.substr(at, length) : "?";
        if (clean.size() + piece.size() > maxBytes) {
            break;
        }
        clean += piece;
        at += length;
    }
    return WithoutOuterBlanks(clean);
}

std::string PlainName(const PortFacts& facts) {
    return CleanText(Join(ModelName(facts), WithoutOuterBlanks(facts.serial)), kMaxText);
}

std::string NameAtPlace(const PortFacts& facts) {
    const std::string place = " @" + CleanText(facts.place, kMaxText / 2);
    const std::string name = Join(ModelName(facts), WithoutOuterBlanks(facts.serial));
    return CleanText(name, kMaxText - place.size()) + place;
}

std::string DeviceText(const PortFacts& facts) {
    const std::string id = facts.vendorId.empty() ? "" : facts.vendorId + ":" + facts.productId;
    std::string text = Fact("bus", facts.bus);
    text = Join(text, Fact("id", id));
    text = Join(text, Fact("place", facts.place));
    text = Join(text, Fact("driver", facts.driver));
    text = Join(text, Fact("serial", facts.serial));
    return CleanText(text, kMaxText);
}
