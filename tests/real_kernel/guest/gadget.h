// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_GADGET_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_GADGET_H

#include <string>
#include <vector>

/// A USB device that this machine plugs into itself, with the kernel's own gadget functions:
///
///     Gadget modem(0);
///     modem.Texts("Acme", "Modem", "A1").AddAcmPorts(3).PlugIn();
///
/// Pulled out and taken apart at the end; what has FarNode open must be closed by then.
class Gadget {
  public:
    /// @param socket  0 to 2: where it is plugged in
    explicit Gadget(int socket);
    ~Gadget();
    Gadget(const Gadget&) = delete;
    Gadget& operator=(const Gadget&) = delete;

    /// Hexadecimal, "0403", "6011" and "0800"; 1209:0001 unless told. Drivers may go by the
    /// release.
    Gadget& Ids(const std::string& vendor, const std::string& product,
                const std::string& release = "0100");
    /// An empty text is one that the device does not have.
    Gadget& Texts(const std::string& maker, const std::string& product, const std::string& serial);
    Gadget& AddAcmPorts(int count) { return AddPorts("acm", count); }
    /// Ports of no class: a vendor's driver takes them if the numbers are its own.
    Gadget& AddVendorPorts(int count) { return AddPorts("gser", count); }

    void PlugIn();
    void PullOut();

    /// The terminal at the device's own side of a port: what a host writes is read there.
    std::string FarNode(int port = 0) const;

    /// Where the host sees the device: "/sys/devices/platform/dummy_hcd.0/usb2/2-1".
    std::string SysPath() const;
    /// "2-1"
    std::string Place() const;

    /// Takes the host's driver from one interface ("cdc_acm", 2) and gives it back.
    void Unbind(const std::string& driver, int interface) const;
    void Bind(const std::string& driver, int interface) const;

    /// Lets the host use the device or not, as if it had been pulled out, without any delay.
    void Authorize(bool allowed) const;

  private:
    Gadget& AddPorts(const std::string& function, int count);
    std::string InterfaceName(int interface) const;

    int m_Socket;
    std::string m_Path;
    std::vector<std::string> m_Functions;
};

#endif
