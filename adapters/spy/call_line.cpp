// SPDX-License-Identifier: MIT
#include "adapters/spy/call_line.h"

#include <string.h>

#include <algorithm>

#include "adapters/spy/json_line.h"

namespace {

// An adapter may forget the terminator.
template <size_t kSize> std::string_view TextIn(const char (&array)[kSize]) {
    return {array, strnlen(array, kSize)};
}

template <typename Record, typename ToJson>
std::string Array(const Record* records, int count, int limit, ToJson toJson) {
    std::string json = "[";
    for (int i = 0; i < std::min(count, limit); ++i) {
        json += (i == 0 ? "" : ",") + toJson(records[i]);
    }
    return json + "]";
}

std::string PortJson(const _OS_ADAPT_PORTINFO& port) {
    return JsonObject().Text("name", TextIn(port.szPortName)).Number("id", port.nPortID).Done();
}

std::string DeviceJson(const _OS_ADAPT_DEVICEPORTINFO& device) {
    return JsonObject()
        .Text("name", TextIn(device.szDeviceName))
        .Text("text", TextIn(device.szDeviceText))
        .Raw("ports", Array(device.stPort, device.nPortCount, OS_ADAPT_MAX_PORTS, PortJson))
        .Done();
}

std::string StatusText(int status) {
    return status == OS_ADAPT_DEVICE_INSERT    ? "insert"
           : status == OS_ADAPT_DEVICE_PULLOUT ? "pullout"
                                               : std::to_string(status);
}

void AddPort(JsonObject& json, const Call& call) {
    if (call.port != nullptr) {
        json.Text("port", call.port->name);
    }
}

void AddDevices(JsonObject& json, const Call& call) {
    json.Number("which", call.which);
    if (call.HasSucceeded() && call.list != nullptr) {
        json.Raw("devices", Array(call.list->stDevice, call.list->nDeviceCount,
                                  OS_ADAPT_MAX_DEVICES, DeviceJson));
    }
}

// Of a write all that the host gave, within reason; of a read what it was given.
size_t BytesToShow(const Call& call) {
    constexpr long kMaxNotTaken = 1024L * 1024;
    const size_t moved = call.BytesMoved();
    if (call.kind == OSADAPT_SPY_READ || call.data == nullptr) {
        return moved;
    }
    return std::max(moved, static_cast<size_t>(std::clamp(call.length, 0L, kMaxNotTaken)));
}

void AddData(JsonObject& json, const Call& call) {
    json.Number("length", call.length);
    json.Bytes("data", call.data, BytesToShow(call));
}

void AddArguments(JsonObject& json, const Call& call) {
    switch (call.kind) {
    case OSADAPT_SPY_OPEN:
        AddPort(json, call);
        json.Number("handle", call.handle);
        break;
    case OSADAPT_SPY_CLOSE:
        json.Number("handle", call.handle);
        AddPort(json, call);
        break;
    case OSADAPT_SPY_WRITE:
    case OSADAPT_SPY_READ:
        json.Number("handle", call.handle);
        AddPort(json, call);
        AddData(json, call);
        break;
    case OSADAPT_SPY_ENUMERATE:
        AddDevices(json, call);
        break;
    case OSADAPT_SPY_NOTICE:
        json.Text("status", StatusText(call.status));
        break;
    default:
        break;
    }
}

// How many bytes of the data count; what the adapter says instead stands beside it.
void AddCount(JsonObject& json, const Call& call) {
    const auto moved = static_cast<long>(call.BytesMoved());
    json.Number("count", moved);
    if (call.HasSucceeded() && call.count != moved) {
        json.Number("reported", call.count);
    }
}

void AddResult(JsonObject& json, const Call& call) {
    if (!call.isFinished) {
        json.Raw("unfinished", "true");
    } else if (call.kind != OSADAPT_SPY_NOTICE) {
        json.Number("result", call.result);
    }
    if (call.kind == OSADAPT_SPY_WRITE || call.kind == OSADAPT_SPY_READ) {
        AddCount(json, call);
    }
}

} // namespace

std::string CallMembers(const Call& call, int64_t thread) {
    JsonObject json;
    json.Number("thread", thread);
    json.Text("call", NameOf(call.kind));
    AddArguments(json, call);
    AddResult(json, call);
    json.Number("took_us", (call.endNs - call.startNs) / 1000);
    if (!call.fault.empty()) {
        json.Text("fault", call.fault);
    }
    const std::string object = json.Done();
    return object.substr(1, object.size() - 2);
}
