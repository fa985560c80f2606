// SPDX-License-Identifier: MIT
#include "adapters/linux/facts_reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

std::string Attribute(udev_device* device, const char* name) {
    return UdevText(udev_device_get_sysattr_value(device, name));
}

std::string Property(udev_device* device, const char* name) {
    return UdevText(udev_device_get_property_value(device, name));
}

// An attribute, or where the device has none the database's word for it.
std::string AttributeOr(udev_device* device, const char* attribute, const char* property) {
    std::string text = Attribute(device, attribute);
    return text.empty() ? Property(device, property) : text;
}

int Number(const std::string& text, int base) {
    return static_cast<int>(std::strtol(text.c_str(), nullptr, base));
}

// PCI writes its numbers as "0x8086".
std::string WithoutPrefix(const std::string& number) {
    return number.compare(0, 2, "0x") == 0 ? number.substr(2) : number;
}

bool IsUnder(const std::string& path, const char* part) {
    return path.find(part) != std::string::npos;
}

bool IsRfcomm(const std::string& sysPath) { return IsUnder(sysPath, "/tty/rfcomm"); }

// Most terminals of a machine are consoles, which need not be opened to know it.
bool IsConsole(const std::string& sysPath) {
    return IsUnder(sysPath, "/devices/virtual/") && !IsRfcomm(sysPath);
}

// Newer kernels put devices of their own between a UART and what it belongs to.
udev_device* OwnerOf(udev_device* tty) {
    udev_device* owner = udev_device_get_parent(tty);
    while (owner != nullptr && UdevText(udev_device_get_subsystem(owner)) == "serial-base") {
        owner = udev_device_get_parent(owner);
    }
    return owner;
}

bool IsPhantom(udev_device* tty) { return Attribute(tty, "type") == "0"; }

void ReadOwner(udev_device* owner, PortFacts& facts) {
    facts.devicePath = UdevText(udev_device_get_syspath(owner));
    facts.bus = UdevText(udev_device_get_subsystem(owner));
    facts.place = UdevText(udev_device_get_sysname(owner));
    facts.driver = UdevText(udev_device_get_driver(owner));
}

bool ReadUsb(udev_device* tty, udev_device* owner, PortFacts& facts) {
    udev_device* device = udev_device_get_parent_with_subsystem_devtype(tty, "usb", "usb_device");
    udev_device* interface =
        udev_device_get_parent_with_subsystem_devtype(tty, "usb", "usb_interface");
    if (device == nullptr || interface == nullptr) {
        return false;
    }
    ReadOwner(device, facts);
    facts.driver = UdevText(udev_device_get_driver(interface));
    facts.vendorId = Attribute(device, "idVendor");
    facts.productId = Attribute(device, "idProduct");
    facts.vendor = AttributeOr(device, "manufacturer", "ID_VENDOR_FROM_DATABASE");
    facts.product = AttributeOr(device, "product", "ID_MODEL_FROM_DATABASE");
    facts.serial = Attribute(device, "serial");
    facts.interfaceNumber = Number(Attribute(interface, "bInterfaceNumber"), 16);
    facts.portNumber = Number(Attribute(owner, "port_number"), 10);
    return !facts.vendorId.empty();
}

void ReadRfcomm(udev_device* tty, udev_device* owner, PortFacts& facts) {
    facts.devicePath = facts.sysPath;
    facts.place = UdevText(udev_device_get_sysname(tty));
    if (owner != nullptr) {
        ReadOwner(owner, facts);
    }
    facts.bus = "bluetooth";
    facts.vendor = "Bluetooth";
    facts.serial = Attribute(tty, "address");
    facts.portNumber = Number(Attribute(tty, "channel"), 10);
}

void ReadBuiltIn(udev_device* owner, PortFacts& facts) {
    ReadOwner(owner, facts);
    if (facts.bus == "pci") {
        facts.vendorId = WithoutPrefix(Attribute(owner, "vendor"));
        facts.productId = WithoutPrefix(Attribute(owner, "device"));
        facts.vendor = Property(owner, "ID_VENDOR_FROM_DATABASE");
        facts.product = Property(owner, "ID_MODEL_FROM_DATABASE");
    }
}

FactsRead::Kind ReadByKind(udev_device* tty, PortFacts& facts) {
    using Kind = FactsRead::Kind;
    udev_device* owner = OwnerOf(tty);
    if (IsRfcomm(facts.sysPath)) {
        ReadRfcomm(tty, owner, facts);
        return Kind::Port;
    }
    if (owner == nullptr) {
        return Kind::Incomplete;
    }
    if (IsPhantom(tty)) {
        return Kind::NoPort;
    }
    if (IsUnder(facts.sysPath, "/usb")) {
        return ReadUsb(tty, owner, facts) ? Kind::Port : Kind::Incomplete;
    }
    ReadBuiltIn(owner, facts);
    return facts.bus.empty() ? Kind::Incomplete : Kind::Port;
}

std::string NodeOf(udev_device* tty) {
    const std::string node = UdevText(udev_device_get_devnode(tty));
    return node.empty() ? "/dev/" + UdevText(udev_device_get_sysname(tty)) : node;
}

bool IsInitialized(udev_device* tty) {
    return udev_device_get_is_initialized(tty) > 0 || !Property(tty, "USEC_INITIALIZED").empty();
}

} // namespace

FactsRead ReadFacts(udev* context, const std::string& sysPath) {
    FactsRead read;
    read.facts.sysPath = sysPath;
    if (IsConsole(sysPath)) {
        return read;
    }
    read.facts.inode = SysInode(sysPath); // first: what is read after it is not older
    const UdevDevice tty(udev_device_new_from_syspath(context, sysPath.c_str()));
    if (tty == nullptr || read.facts.inode == 0) {
        return read;
    }
    read.facts.node = NodeOf(tty.get());
    read.facts.number = udev_device_get_devnum(tty.get());
    read.isInitialized = IsInitialized(tty.get());
    read.kind = ReadByKind(tty.get(), read.facts);
    if (SysInode(sysPath) != read.facts.inode) {
        read.kind = FactsRead::Kind::Incomplete; // it changed hands in between
    }
    return read;
}

ino_t SysInode(const std::string& sysPath) {
    struct stat info {};
    return stat(sysPath.c_str(), &info) == 0 ? info.st_ino : 0;
}
