// SPDX-License-Identifier: MIT
#include "adapters/virtual/recording/recorded_call.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

#include "OSAdapt.h"
#include "adapters/virtual/language/event_values.h"
#include "adapters/virtual/recording/recorded_data.h"

using Json = nlohmann::json;

namespace {

constexpr const char* kHeaderKey = "kovasmgr_recording";
constexpr int kMaxDepth = 8;
constexpr int64_t kMaxMicroseconds = kMaxTime.count();
constexpr int64_t kMaxCount = INT32_MAX;

[[noreturn]] void Fail(const std::string& reason) { throw std::runtime_error(reason); }

std::string Quoted(const char* key) { return "'" + std::string(key) + "'"; }

// Deeper than any line is; what goes deeper is not taken apart at all.
bool RefuseDepth(int depth, Json::parse_event_t, Json&) {
    if (depth > kMaxDepth) {
        Fail("the line is nested too deep");
    }
    return true;
}

Json ParseLine(const std::string& line) {
    Json object = Json::parse(line, RefuseDepth, false);
    if (!object.is_object()) {
        Fail("the line is not a JSON object");
    }
    return object;
}

const Json* Find(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

const Json& Need(const Json& object, const char* key) {
    const Json* value = Find(object, key);
    if (value == nullptr) {
        Fail("the line lacks " + Quoted(key));
    }
    return *value;
}

int64_t Number(const Json* value, const char* key, int64_t least, int64_t most) {
    if (value == nullptr) {
        return 0;
    }
    const bool fits = value->is_number_unsigned() ? value->get<uint64_t>() <= uint64_t{INT64_MAX}
                                                  : value->is_number_integer();
    const int64_t number = fits ? value->get<int64_t>() : 0;
    if (!fits || number < least || number > most) {
        Fail(Quoted(key) + " must be a whole number from " + std::to_string(least) + " to " +
             std::to_string(most));
    }
    return number;
}

int64_t NeedNumber(const Json& object, const char* key, int64_t least, int64_t most) {
    return Number(&Need(object, key), key, least, most);
}

const std::string& Text(const Json& value, const char* key) {
    if (!value.is_string()) {
        Fail(Quoted(key) + " must be a text");
    }
    return value.get_ref<const std::string&>();
}

const std::string& NeedText(const Json& object, const char* key) {
    return Text(Need(object, key), key);
}

bool IsControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7f;
}

// Of a character of UTF-8, all bytes but the first.
bool IsContinuation(char character) {
    return (static_cast<unsigned char>(character) & 0xc0U) == 0x80U;
}

// Cut to the room that a list has, not within a character: what was no UTF-8 is longer here than it
// was there.
std::string ReadName(const Json& object, const char* key, size_t size) {
    std::string name = NeedText(object, key);
    size_t end = std::min(name.size(), size - 1);
    while (end < name.size() && end > 0 && IsContinuation(name[end])) {
        --end;
    }
    name.resize(end);
    std::replace_if(name.begin(), name.end(), IsControl, '?');
    return name;
}

std::string NeedName(const Json& object, const char* key, size_t size) {
    std::string name = ReadName(object, key, size);
    if (name.empty()) {
        Fail(Quoted(key) + " is empty");
    }
    return name;
}

std::string NeedPort(const Json& object) {
    return NeedName(object, "port", OS_ADAPT_PORT_NAME_SIZE);
}

const Json& NeedArray(const Json& object, const char* key) {
    const Json& value = Need(object, key);
    if (!value.is_array()) {
        Fail(Quoted(key) + " must be an array");
    }
    return value;
}

const Json& NeedObject(const Json& value, const char* key) {
    if (!value.is_object()) {
        Fail(Quoted(key) + " must hold objects only");
    }
    return value;
}

RecordedDevice ReadDevice(const Json& source) {
    RecordedDevice device;
    device.name = NeedName(source, "name", OS_ADAPT_DEVICE_TEXT_SIZE);
    device.text = ReadName(source, "text", OS_ADAPT_DEVICE_TEXT_SIZE);
    for (const Json& each : NeedArray(source, "ports")) {
        const Json& port = NeedObject(each, "ports");
        const int64_t id = Number(Find(port, "id"), "id", INT32_MIN, INT32_MAX);
        device.ports.push_back(
            {NeedName(port, "name", OS_ADAPT_PORT_NAME_SIZE), static_cast<int32_t>(id)});
    }
    return device;
}

std::vector<RecordedDevice> ReadDevices(const Json& object) {
    std::vector<RecordedDevice> devices;
    for (const Json& device : NeedArray(object, "devices")) {
        devices.push_back(ReadDevice(NeedObject(device, "devices")));
    }
    return devices;
}

// Of a write all bytes are there, and the count says how many were taken.
std::string ReadData(const Json& object) {
    const auto count = static_cast<size_t>(Number(Find(object, "count"), "count", 0, kMaxCount));
    if (count == 0) {
        return "";
    }
    const auto data = DecodeBase64(NeedText(object, "data"));
    if (!data || data->size() < count) {
        Fail(data ? "'data' has " + std::to_string(data->size()) + " bytes, fewer than 'count'"
                  : "'data' must be base64");
    }
    return data->substr(0, count);
}

void ReadDetails(const Json& object, RecordedCall& call) {
    if (call.call == "enumerate") {
        call.devices = ReadDevices(object);
    } else if (call.call == "open") {
        call.port = NeedPort(object);
    } else if (call.call == "write" || call.call == "read") {
        call.data = ReadData(object);
        call.port = call.data.empty() ? "" : NeedPort(object);
    }
}

} // namespace

bool IsRecordingHeader(std::string_view line) {
    return !line.empty() && line.front() == '{' && line.find(kHeaderKey) != std::string_view::npos;
}

void CheckRecordingHeader(const std::string& line) {
    if (NeedNumber(ParseLine(line), kHeaderKey, 1, INT32_MAX) != 1) {
        Fail("the recording is of a later version; this one knows version 1");
    }
}

RecordedCall ReadRecordedCall(const std::string& line) {
    const Json object = ParseLine(line);
    RecordedCall call;
    call.call = Find(object, "call") == nullptr ? "" : NeedText(object, "call");
    if (call.call.empty()) {
        return call;
    }
    call.start = ScenarioTime(NeedNumber(object, "t_us", 0, kMaxMicroseconds));
    call.end =
        call.start + ScenarioTime(Number(Find(object, "took_us"), "took_us", 0, kMaxMicroseconds));
    call.succeeded = Number(Find(object, "result"), "result", INT64_MIN, INT64_MAX) == OS_ADAPT_OK;
    if (call.succeeded) {
        ReadDetails(object, call);
    }
    return call;
}
