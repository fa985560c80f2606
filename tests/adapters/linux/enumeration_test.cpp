// SPDX-License-Identifier: MIT
//
// What is attached when a host looks for the first time.
#include <stdlib.h>

#include <memory>

#include "tests/adapters/linux/linux_bench.h"

namespace {

class Enumeration : public LoadedBench {
  protected:
    // The texts of the only device.
    std::string Name(const MockDevice& device) { return OnlyOne(device).szDeviceName; }
    std::string Text(const MockDevice& device) { return OnlyOne(device).szDeviceText; }

  private:
    const _OS_ADAPT_DEVICEPORTINFO& OnlyOne(const MockDevice& device) {
        m_Machine.Plug(device);
        m_List = m_Adapter.Devices();
        m_Machine.Pull(device);
        EXPECT_EQ(1, m_List->nDeviceCount);
        return m_List->stDevice[0];
    }

    std::unique_ptr<_OS_ADAPT_DEVICEPORTLIST> m_List;
};

MockDevice Named(const std::string& vendor, const std::string& product, const std::string& serial) {
    return MockDevice::Usb("1-1")
        .Id("1209", "0001")
        .Texts(vendor, product, serial)
        .Port("ttyUSB0", 0, "ftdi_sio");
}

bool IsShort(const std::string& text) { return text.size() < OS_ADAPT_DEVICE_TEXT_SIZE; }

} // namespace

TEST_F(Enumeration, AMachineWithoutPortsHasNoDevice) { EXPECT_EQ("", Devices()); }

TEST_F(Enumeration, AnFtdiIsCalledByItsChipAndSerialNumber) {
    const MockDevice device = MockDevice::Usb("1-1.4")
                                  .Id("0403", "6001")
                                  .Texts("FTDI", "FT232R USB UART", "A50285BI")
                                  .Port("ttyUSB0", 0, "ftdi_sio");
    m_Machine.Plug(device);
    EXPECT_EQ("FTDI FT232R A50285BI(/dev/ttyUSB0)", Devices());
    EXPECT_STREQ("bus=usb id=0403:6001 place=1-1.4 driver=ftdi_sio serial=A50285BI",
                 m_Adapter.Devices()->stDevice[0].szDeviceText);
}

TEST_F(Enumeration, AFourPortFtdiIsOneDeviceAndItsInterfacesOrderItsPorts) {
    m_Machine.Plug(MockDevice::Usb("1-1.2")
                       .Id("0403", "6011")
                       .Texts("FTDI", "Quad RS232-HS", "")
                       .Port("ttyUSB2", 0, "ftdi_sio")
                       .Port("ttyUSB0", 1, "ftdi_sio")
                       .Port("ttyUSB3", 2, "ftdi_sio")
                       .Port("ttyUSB1", 3, "ftdi_sio"));
    EXPECT_EQ("FTDI Quad RS232-HS @1-1.2(/dev/ttyUSB2 /dev/ttyUSB0 /dev/ttyUSB3 /dev/ttyUSB1)",
              Devices());
    EXPECT_STREQ("bus=usb id=0403:6011 place=1-1.2 driver=ftdi_sio",
                 m_Adapter.Devices()->stDevice[0].szDeviceText);
}

TEST_F(Enumeration, PortsOfOneInterfaceAreOrderedByTheirNumber) {
    m_Machine.Plug(MockDevice::Usb("1-2")
                       .Id("0711", "0230")
                       .Texts("", "Four Ports", "7")
                       .Port("ttyUSB1", 0, "mct_u232", 10)
                       .Port("ttyUSB0", 0, "mct_u232", 9)
                       .Port("ttyUSB3", 0, "mct_u232", 1)
                       .Port("ttyUSB2", 0, "mct_u232", 0));
    EXPECT_EQ("Four Ports 7(/dev/ttyUSB2 /dev/ttyUSB3 /dev/ttyUSB0 /dev/ttyUSB1)", Devices());
}

TEST_F(Enumeration, ACp210xLosesItsGenericTail) {
    EXPECT_EQ("Silicon Labs CP2102 0001",
              Name(MockDevice::Usb("1-3")
                       .Id("10c4", "ea60")
                       .Texts("Silicon Labs", "CP2102 USB to UART Bridge Controller", "0001")
                       .Port("ttyUSB0", 0, "cp210x")));
}

TEST_F(Enumeration, TwinsWithoutSerialNumbersAreToldApartByTheirPlace) {
    m_Machine.Plug(MockDevice::Usb("1-1.2")
                       .Id("1a86", "7523")
                       .Texts("", "USB Serial", "")
                       .Port("ttyUSB0", 0, "ch341-uart"));
    m_Machine.Plug(MockDevice::Usb("1-1.1")
                       .Id("1a86", "7523")
                       .Texts("", "USB Serial", "")
                       .Port("ttyUSB1", 0, "ch341-uart"));
    EXPECT_EQ("USB Serial @1-1.1(/dev/ttyUSB1) USB Serial @1-1.2(/dev/ttyUSB0)", Devices());
}

TEST_F(Enumeration, ClonesWithOneSerialNumberAreToldApartByTheirPlace) {
    int node = 0;
    for (const char* const place : {"2-1", "1-1.10", "1-1.9"}) {
        m_Machine.Plug(MockDevice::Usb(place)
                           .Id("10c4", "ea60")
                           .Texts("Silicon Labs", "CP2102", "0001")
                           .Port("ttyUSB" + std::to_string(node++), 0, "cp210x"));
    }
    const auto list = m_Adapter.Devices();
    ASSERT_EQ(3, list->nDeviceCount);
    EXPECT_STREQ("Silicon Labs CP2102 0001", list->stDevice[0].szDeviceName);
    EXPECT_STREQ("Silicon Labs CP2102 0001 @1-1.10", list->stDevice[1].szDeviceName);
    EXPECT_STREQ("Silicon Labs CP2102 0001 @2-1", list->stDevice[2].szDeviceName);
}

TEST_F(Enumeration, APl2303KeepsAProductThatIsAllItSays) {
    EXPECT_EQ("Prolific Technology Inc. USB-Serial Controller @1-3",
              Name(MockDevice::Usb("1-3")
                       .Id("067b", "2303")
                       .Texts("Prolific Technology Inc.", "USB-Serial Controller", "")
                       .Port("ttyUSB0", 0, "pl2303")));
}

TEST_F(Enumeration, AModemIsOneDeviceWithItsPortsInTheOrderOfTheirInterfaces) {
    m_Machine.Plug(MockDevice::Usb("2-1.3")
                       .Id("1e2d", "0061")
                       .Texts("Cinterion", "PLSx", "")
                       .Port("ttyACM2", 0, "cdc_acm")
                       .Port("ttyACM0", 10, "cdc_acm")
                       .Port("ttyACM1", 2, "cdc_acm"));
    EXPECT_EQ("Cinterion PLSx @2-1.3(/dev/ttyACM2 /dev/ttyACM1 /dev/ttyACM0)", Devices());
}

TEST_F(Enumeration, AnArduinosVendorLosesItsAddress) {
    EXPECT_EQ("Arduino Uno R3 75735", Name(MockDevice::Usb("1-1")
                                               .Id("2341", "0043")
                                               .Texts("Arduino (www.arduino.cc)", "Uno R3", "75735")
                                               .Port("ttyACM0", 0, "cdc_acm")));
}

TEST_F(Enumeration, AVendorThatTheProductBeginsWithIsNotRepeated) {
    EXPECT_EQ("Acme Modem 9 77", Name(Named("Acme", "Acme Modem 9", "77")));
}

TEST_F(Enumeration, ADeviceWithoutTextsIsCalledByItsNumbers) {
    EXPECT_EQ("USB device 1209:0001 @1-1", Name(Named("", "", "")));
}

TEST_F(Enumeration, ABuiltInUartIsCalledByItsPlaceAndItsPhantomsAreLeftOut) {
    m_Machine.Plug(MockDevice::BuiltIn("pnp", "00:05", "serial")
                       .PortOfSerialBase("ttyS0")
                       .PortAttribute("type", "4"));
    m_Machine.Plug(MockDevice::BuiltIn("platform", "serial8250", "serial8250")
                       .Port("ttyS1")
                       .PortAttribute("type", "0")
                       .Port("ttyS2")
                       .PortAttribute("type", "0"));
    EXPECT_EQ("Serial port @00:05(/dev/ttyS0)", Devices());
    EXPECT_STREQ("bus=pnp place=00:05 driver=serial",
                 m_Adapter.Devices()->stDevice[0].szDeviceText);
}

TEST_F(Enumeration, UartsOfOlderKernelsAndOfPciAndOfTheBoardAreFound) {
    m_Machine.Plug(MockDevice::BuiltIn("pci", "0000:00:16.3", "serial")
                       .Attribute("vendor", "0x8086")
                       .Attribute("device", "0xa13d")
                       .Port("ttyS4")
                       .PortAttribute("type", "4"));
    m_Machine.Plug(MockDevice::BuiltIn("platform", "fe201000.serial", "uart-pl011")
                       .Port("ttyAMA0")
                       .PortAttribute("type", "32"));
    EXPECT_EQ("Serial port @0000:00:16.3(/dev/ttyS4) Serial port @fe201000.serial(/dev/ttyAMA0)",
              Devices());
    EXPECT_STREQ("bus=pci id=8086:a13d place=0000:00:16.3 driver=serial",
                 m_Adapter.Devices()->stDevice[0].szDeviceText);
}

TEST_F(Enumeration, ABluetoothPortIsCalledByItsAddress) {
    m_Machine.Plug(MockDevice::Virtual()
                       .Port("rfcomm0")
                       .PortAttribute("address", "00:11:22:33:44:55")
                       .PortAttribute("channel", "1"));
    m_Machine.Plug(
        MockDevice::Bluetooth("11").Port("rfcomm1").PortAttribute("address", "AA:BB:CC:DD:EE:FF"));
    const std::string devices = Devices();
    EXPECT_EQ(2, m_Adapter.Devices()->nDeviceCount) << devices;
    EXPECT_NE(std::string::npos, devices.find("Bluetooth 00:11:22:33:44:55(/dev/rfcomm0)"))
        << devices;
    EXPECT_NE(std::string::npos, devices.find("Bluetooth AA:BB:CC:DD:EE:FF(/dev/rfcomm1)"))
        << devices;
}

TEST_F(Enumeration, TerminalsOfTheKernelItselfAreLeftOut) {
    m_Machine.Plug(MockDevice::Virtual()
                       .Port("tty")
                       .Port("tty0")
                       .Port("tty1")
                       .Port("console")
                       .Port("ptmx")
                       .Port("ttyprintk")
                       .Port("ttyGS0"));
    EXPECT_EQ("", Devices());
}

TEST_F(Enumeration, ANameInUtf8IsKept) {
    EXPECT_EQ("Fü 電子 Gerät é 1", Name(Named("Fü 電子", "Gerät é", "1")));
}

TEST_F(Enumeration, WhatIsNoUtf8AndControlCharactersAreReplaced) {
    EXPECT_EQ("A? B???C ?D 1", Name(Named("A\x1b",
                                          "B\x01\x7f\tC \xff"
                                          "D",
                                          "1")));
}

TEST_F(Enumeration, QuotesAndPercentSignsAreOnlyCharacters) {
    const MockDevice device = Named("\"Q'`", "100%s%n\\ $(x)", "%d");
    EXPECT_EQ("\"Q'` 100%s%n\\ $(x) %d", Name(device));
    EXPECT_EQ("bus=usb id=1209:0001 place=1-1 driver=ftdi_sio serial=%d", Text(device));
}

TEST_F(Enumeration, ALongNameIsCutAtACharacter) {
    std::string product;
    for (int i = 0; i < 100; ++i) {
        product += "é"; // 200 bytes
    }
    const std::string name = Name(Named("X", product, ""));
    EXPECT_TRUE(IsShort(name)) << name.size();
    EXPECT_GE(name.size(), 125U);
    EXPECT_EQ("é @1-1", name.substr(name.size() - 7)); // the place is what tells it apart
    EXPECT_EQ(0U, (name.size() - std::string("X  @1-1").size()) % 2) << name;
}

TEST_F(Enumeration, LongClonesStillHaveNamesOfTheirOwn) {
    const std::string serial(200, '7');
    m_Machine.Plug(MockDevice::Usb("1-1")
                       .Id("1209", "1")
                       .Texts("V", "P", serial)
                       .Port("ttyUSB0", 0, "cp210x"));
    m_Machine.Plug(MockDevice::Usb("1-2")
                       .Id("1209", "1")
                       .Texts("V", "P", serial)
                       .Port("ttyUSB1", 0, "cp210x"));
    const auto list = m_Adapter.Devices();
    ASSERT_EQ(2, list->nDeviceCount);
    EXPECT_STRNE(list->stDevice[0].szDeviceName, list->stDevice[1].szDeviceName);
    const std::string facts = "bus=usb id=1209:1 place=1-1 driver=cp210x serial=";
    EXPECT_EQ(facts + std::string(127 - facts.size(), '7'), list->stDevice[0].szDeviceText);
}

TEST_F(Enumeration, BlanksInAFactBecomeUnderscores) {
    EXPECT_EQ("bus=usb id=1209:0001 place=1-1 driver=ftdi_sio serial=A_1_B",
              Text(Named("V", "P", "A 1 B")));
}

TEST_F(Enumeration, WhatStandsAlreadyKeepsItsPlaceWhereSixtyFourDevicesAreReported) {
    for (int i = 0; i < 70; ++i) {
        m_Machine.Plug(MockDevice::Usb("1-" + std::to_string(i + 1))
                           .Id("0403", "6001")
                           .Texts("FTDI", "FT232R", std::to_string(1000 + i))
                           .Port("ttyUSB" + std::to_string(i), 0, "ftdi_sio"));
    }
    const auto list = m_Adapter.Devices();
    ASSERT_EQ(OS_ADAPT_MAX_DEVICES, list->nDeviceCount);
    EXPECT_STREQ("FTDI FT232R 1000", list->stDevice[0].szDeviceName);
    EXPECT_STREQ("FTDI FT232R 1063", list->stDevice[63].szDeviceName);
    EXPECT_GE(LogLines("1064"), 1);
    m_Adapter.Devices();
    EXPECT_EQ(1, LogLines("1064"));
}

TEST_F(Enumeration, SixteenPortsOfADeviceAreReported) {
    MockDevice device = MockDevice::Usb("1-1").Id("1209", "1").Texts("", "Many", "1");
    for (int i = 0; i < 20; ++i) {
        device.Port("ttyUSB" + std::to_string(i), i, "ftdi_sio");
    }
    m_Machine.Plug(device);
    const auto list = m_Adapter.Devices();
    ASSERT_EQ(1, list->nDeviceCount);
    ASSERT_EQ(OS_ADAPT_MAX_PORTS, list->stDevice[0].nPortCount);
    EXPECT_STREQ("/dev/ttyUSB15", list->stDevice[0].stPort[15].szPortName);
    EXPECT_GE(LogLines("/dev/ttyUSB16"), 1);
}

TEST_F(Enumeration, WithoutARegistrationEachOneLooksAnew) {
    const MockDevice one = Named("", "One", "1");
    EXPECT_EQ("", Devices());
    m_Machine.Appear(one); // no event
    EXPECT_EQ("One 1(/dev/ttyUSB0)", Devices());
    m_Machine.Vanish(one);
    EXPECT_EQ("", Devices());
}

TEST_F(Enumeration, AnUnknownSourceOfEventsIsLoggedOnce) {
    setenv("OSADAPT_EVENTS", "rumour", 1);
    Devices();
    Devices();
    EXPECT_EQ(1, LogLines("rumour"));
}
