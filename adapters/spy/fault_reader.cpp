// SPDX-License-Identifier: MIT
#include <stdexcept>

#include "adapters/spy/call.h"
#include "adapters/spy/fault.h"
#include "adapters/spy/fault_words.h"

namespace {

bool IsOfPort(OSADAPT_SPY_KIND call) {
    return call >= OSADAPT_SPY_OPEN && call <= OSADAPT_SPY_READ;
}

bool Fits(FaultKind fault, OSADAPT_SPY_KIND call) {
    switch (fault) {
    case FaultKind::FailWithHandle:
        return call == OSADAPT_SPY_OPEN;
    case FaultKind::Short:
        return call == OSADAPT_SPY_WRITE || call == OSADAPT_SPY_READ;
    default:
        return true;
    }
}

void ReadPort(FaultWords& words, Fault& fault) {
    if (!words.Skip('@')) {
        return;
    }
    if (!IsOfPort(fault.call)) {
        words.Fail(std::string(NameOf(fault.call)) + " is of no port");
    }
    fault.port = words.Port();
}

void ReadNumbers(FaultWords& words, Fault& fault) {
    if (words.Skip('*')) {
        fault.last = UINT64_MAX;
        return;
    }
    fault.first = words.Number("the number of a call, or *");
    fault.last = fault.first;
    if (words.Skip('+')) {
        fault.last = UINT64_MAX;
    } else if (words.Skip('-')) {
        fault.last = words.Number("the number of the last call");
    }
    if (fault.first == 0 || fault.last < fault.first) {
        words.Fail("calls are counted from 1, and the last is not before the first");
    }
}

void ReadValue(FaultWords& words, Fault& fault) {
    if (fault.kind == FaultKind::Delay) {
        words.Expect(':', "a time, as delay:20ms");
        fault.delay = words.Time();
    } else if (fault.kind == FaultKind::Short) {
        words.Expect(':', "a number of bytes, as short:3");
        fault.number = words.Number31("a number of bytes");
        if (fault.number == 0) {
            words.Fail("a call has one byte at least; result:30000 does nothing and succeeds");
        }
    } else if (fault.kind == FaultKind::Result) {
        words.Expect(':', "a result, as result:7");
        const bool isNegative = words.Skip('-');
        fault.number = words.Number31("a result");
        fault.number = isNegative ? -fault.number : fault.number;
    }
}

void ReadFaultOf(FaultWords& words, Fault& fault) {
    const size_t start = words.Place();
    fault.kind = words.Kind();
    ReadValue(words, fault);
    fault.text = words.Since(start);
    if (!Fits(fault.kind, fault.call)) {
        words.FailAt(start, fault.text + " is not for " + NameOf(fault.call));
    }
}

Fault ReadFault(FaultWords& words) {
    Fault fault;
    fault.call = words.Call();
    ReadPort(words, fault);
    words.Expect(':', "':' and the numbers of calls, as write:3=fail");
    ReadNumbers(words, fault);
    words.Expect('=', "'=' and a fault, as write:3=fail");
    ReadFaultOf(words, fault);
    return fault;
}

} // namespace

std::vector<Fault> ReadFaults(const std::string& plan) {
    FaultWords words(plan);
    std::vector<Fault> faults;
    if (words.IsEnd()) {
        return faults;
    }
    do {
        faults.push_back(ReadFault(words));
    } while (words.Skip(','));
    if (!words.IsEnd()) {
        words.Fail("',' and a further fault, or the end, is expected here");
    }
    return faults;
}
