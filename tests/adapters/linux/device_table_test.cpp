// SPDX-License-Identifier: MIT
#include "adapters/linux/device_table.h"

#include <gtest/gtest.h>

#include "adapters/linux/device_names.h"

namespace {

using Names = std::vector<std::string>;

PortFacts Usb(const std::string& place, const std::string& serial = "", int interface = 0) {
    PortFacts facts;
    facts.devicePath = "/sys/devices/" + place;
    facts.sysPath = facts.devicePath + "/" + std::to_string(interface);
    facts.node = "/dev/" + place + "." + std::to_string(interface);
    facts.bus = "usb";
    facts.place = place;
    facts.vendorId = "0403";
    facts.productId = "6001";
    facts.vendor = "FTDI";
    facts.product = "FT232R USB UART";
    facts.serial = serial;
    facts.interfaceNumber = interface;
    return facts;
}

class DeviceTableTest : public testing::Test {
  protected:
    void Add(const PortFacts& facts) { m_Table.Add(facts, 0); }

    Names Devices() const {
        Names names;
        for (const DeviceEntry& device : m_Table.Reported()) {
            names.push_back(device.name);
        }
        return names;
    }

    Names PortsOf(size_t device) const {
        Names names;
        const PortTable table = m_Table.Reported();
        for (const PortEntry& port : table.at(device).ports) {
            names.push_back(port.name);
        }
        return names;
    }

    DeviceTable m_Table;
};

} // namespace

TEST_F(DeviceTableTest, ADeviceWithoutASerialNumberIsNamedByItsPlaceFromTheStart) {
    Add(Usb("1-1"));
    Add(Usb("1-2", "A5"));
    EXPECT_EQ((Names{"FTDI FT232R @1-1", "FTDI FT232R A5"}), Devices());
}

TEST_F(DeviceTableTest, ASecondOneOfTheSameNameTakesThePlaceAndTheFirstKeepsItsName) {
    Add(Usb("1-1", "A5"));
    Add(Usb("1-2", "A5"));
    EXPECT_EQ((Names{"FTDI FT232R A5", "FTDI FT232R A5 @1-2"}), Devices());
    m_Table.Remove(Usb("1-1", "A5").sysPath);
    EXPECT_EQ(Names{"FTDI FT232R A5 @1-2"}, Devices());
}

TEST_F(DeviceTableTest, ANameThatIsTakenWithItsPlaceIsNumbered) {
    for (const char* path : {"/sys/a", "/sys/b", "/sys/c"}) {
        PortFacts facts = Usb("1-1");
        facts.devicePath = path;
        facts.sysPath = facts.node = path;
        Add(facts);
    }
    EXPECT_EQ((Names{"FTDI FT232R @1-1", "FTDI FT232R @1-1#2", "FTDI FT232R @1-1#3"}), Devices());
}

TEST_F(DeviceTableTest, LongNamesThatBecomeTheSameWhenCutAreTakenApart) {
    const std::string serial(200, 's');
    Add(Usb("1-1", serial + "1"));
    Add(Usb("1-2", serial + "2"));
    ASSERT_EQ(2U, Devices().size());
    EXPECT_EQ(127U, Devices()[0].size());
    EXPECT_EQ(127U, Devices()[1].size());
    EXPECT_EQ(" @1-2", Devices()[1].substr(122));
}

TEST_F(DeviceTableTest, PortsStandInTheOrderOfTheirInterfacesWheneverTheyCame) {
    Add(Usb("1-1", "A5", 2));
    Add(Usb("1-1", "A5", 10));
    Add(Usb("1-1", "A5", 0));
    EXPECT_EQ((Names{"/dev/1-1.0", "/dev/1-1.2", "/dev/1-1.10"}), PortsOf(0));
}

TEST_F(DeviceTableTest, ADeviceGoesWithItsLastPort) {
    Add(Usb("1-1", "A5", 0));
    Add(Usb("1-1", "A5", 1));
    EXPECT_TRUE(m_Table.Remove(Usb("1-1", "A5", 0).sysPath));
    EXPECT_EQ(Names{"/dev/1-1.1"}, PortsOf(0));
    EXPECT_TRUE(m_Table.Remove(Usb("1-1", "A5", 1).sysPath));
    EXPECT_EQ(Names{}, Devices());
    EXPECT_FALSE(m_Table.Remove(Usb("1-1", "A5", 1).sysPath));
}

TEST_F(DeviceTableTest, APortThatComesBackIsAnotherOne) {
    Add(Usb("1-1", "A5"));
    const uint64_t first = m_Table.FindNode("/dev/1-1.0")->arrival;
    m_Table.Remove(Usb("1-1", "A5").sysPath);
    Add(Usb("1-1", "A5"));
    EXPECT_LT(first, m_Table.FindNode("/dev/1-1.0")->arrival);
}

TEST_F(DeviceTableTest, APortThatMovesInTheDeviceTreeStaysWhatItIs) {
    Add(Usb("1-1", "A5"));
    const uint64_t arrival = m_Table.FindNode("/dev/1-1.0")->arrival;
    m_Table.Move(Usb("1-1").sysPath, "/sys/devices/elsewhere");
    EXPECT_EQ(nullptr, m_Table.Find(Usb("1-1").sysPath));
    ASSERT_NE(nullptr, m_Table.Find("/sys/devices/elsewhere"));
    EXPECT_EQ(arrival, m_Table.Find("/sys/devices/elsewhere")->arrival);
    EXPECT_EQ(Names{"FTDI FT232R A5"}, Devices());
}

TEST_F(DeviceTableTest, TheSixtyFifthDeviceWaitsUntilAnotherGoes) {
    for (int i = 0; i < 66; ++i) {
        Add(Usb("1-" + std::to_string(i), std::to_string(i)));
    }
    EXPECT_EQ(64U, Devices().size());
    EXPECT_EQ("FTDI FT232R 63", Devices().back());
    m_Table.Remove(Usb("1-10").sysPath);
    EXPECT_EQ(64U, Devices().size());
    EXPECT_EQ("FTDI FT232R 64", Devices().back());
    EXPECT_EQ("FTDI FT232R 11", Devices()[10]);
}

TEST_F(DeviceTableTest, TheSeventeenthPortWaitsAlsoWhenItsInterfaceStandsBefore) {
    for (int i = 1; i <= 17; ++i) {
        Add(Usb("1-1", "A5", i));
    }
    Add(Usb("1-1", "A5", 0));
    EXPECT_EQ(16U, PortsOf(0).size());
    EXPECT_EQ("/dev/1-1.1", PortsOf(0).front());
    m_Table.Remove(Usb("1-1", "A5", 5).sysPath);
    EXPECT_EQ("/dev/1-1.0", PortsOf(0).front());
    EXPECT_EQ(16U, PortsOf(0).size());
}

TEST(StandsBefore, NumbersInAPlaceCountByTheirValue) {
    EXPECT_TRUE(StandsBefore(Usb("1-1.9"), Usb("1-1.10")));
    EXPECT_FALSE(StandsBefore(Usb("1-1.10"), Usb("1-1.9")));
    EXPECT_TRUE(StandsBefore(Usb("1-1", "", 2), Usb("1-1", "", 10)));
}

TEST(DeviceNames, ADeviceIsCalledWhatAPersonWouldCallIt) {
    const auto named = [](const char* vendor, const char* product, const char* serial) {
        PortFacts facts = Usb("1-1", serial);
        facts.vendor = vendor;
        facts.product = product;
        return PlainName(facts);
    };
    EXPECT_EQ("FTDI FT232R A5", named("FTDI", "FT232R USB UART", "A5"));
    EXPECT_EQ("Arduino Uno 75", named("Arduino (www.arduino.cc)", "Arduino Uno", "75"));
    EXPECT_EQ("Silicon Labs CP2102 0001",
              named("Silicon Labs", "CP2102 USB to UART Bridge Controller", "0001"));
    EXPECT_EQ("USB2.0-Serial", named("", "USB2.0-Serial", ""));
    EXPECT_EQ("USB device 0403:6001", named("", "", ""));
    EXPECT_EQ("QinHeng USB device 0403:6001 7", named(" QinHeng ", "  ", " 7 "));
    EXPECT_EQ("USB UART", named("", "USB UART", ""));
}

TEST(DeviceNames, TextsFromADeviceAreMadeFitToBeShown) {
    EXPECT_EQ("a?b?c", CleanText("a\nb\x7f"
                                 "c",
                                 127));
    EXPECT_EQ("M\xc3\xbcller \"50%\"", CleanText("M\xc3\xbcller \"50%\"", 127));
    EXPECT_EQ("?", CleanText("\xc2\x85", 127)) << "a control character above ASCII";
    EXPECT_EQ("?x", CleanText("\xe2\x80\xaex", 127)) << "turns the direction of text";
    EXPECT_EQ("????", CleanText("\xff\xc3\xed\xa0", 127)) << "no UTF-8";
    EXPECT_EQ("??", CleanText("\xc0\x80", 127)) << "an overlong form";
    EXPECT_EQ("\xc3\xbc", CleanText("\xc3\xbc\xc3\xbc", 3)) << "cut at a character";
    EXPECT_EQ("", CleanText("   ", 127));
}

TEST(DeviceNames, TheTextHoldsTheFactsInTheirOrder) {
    PortFacts facts = Usb("1-1.4", "A5 0");
    facts.driver = "ftdi_sio";
    EXPECT_EQ("bus=usb id=0403:6001 place=1-1.4 driver=ftdi_sio serial=A5_0", DeviceText(facts));
    facts.serial = std::string(200, 's');
    EXPECT_EQ(127U, DeviceText(facts).size());
    EXPECT_EQ(0U,
              DeviceText(facts).find("bus=usb id=0403:6001 place=1-1.4 driver=ftdi_sio serial=s"));
    facts = PortFacts{};
    facts.bus = "pnp";
    facts.place = "00:05";
    EXPECT_EQ("bus=pnp place=00:05", DeviceText(facts));
}
