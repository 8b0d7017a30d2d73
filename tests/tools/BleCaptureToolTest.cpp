// The tool's capture of the vendor HCI traffic, as Wireshark reads it: the
// multi-advertising command's sub-opcodes, the set-parameters and enable
// commands decoded field by field by the Broadcom vendor dissector, and the
// data commands by their raw bytes (the dissector does not expect their
// length byte).
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "ToolRun.h"

namespace connectkit::test {
namespace {

constexpr char kMulti[] = "bthci_vendor.broadcom.le.multi_advertising.";

// tshark's output for `arguments` on the capture, or nothing when it failed.
std::string Tshark(const std::string& capture, const std::string& arguments) {
    std::string out = TempPath("tshark.out");
    int status =
        std::system(("tshark -r " + capture + " -d bthci_cmd.vendor,bthci_vendor.broadcom " +
                     arguments + " >" + out + " 2>/dev/null")
                        .c_str());
    return status == 0 ? ReadFile(out) : "";
}

struct CaptureCase {
    const char* advertise;
    // One line per command as the dissector decodes it: sub-opcode, minimum
    // and maximum interval, advertising type, channel map, instance, enable.
    std::vector<const char*> decoded;
    // A data command's parameters in hex: sub-opcode, length, data, instance.
    std::vector<std::string> raw;
};

const std::string kPad(2 * 24, '0');

TEST(BleCaptureTool, TsharkDecodesEachVendorCommand) {
    if (std::system("command -v tshark >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "tshark is missing: scripts/bootstrap.sh linux installs it";
    }
    const CaptureCase cases[] = {
        {"general 0e0102",
         {"0x05\t\t\t\t\t1\t0x00", "0x01\t80\t80\t0x03\t0x07\t1\t", "0x05\t\t\t\t\t1\t0x01"},
         {"020706ff7d020e0102" + kPad + "01"}},
        {"beamlet 0f0102 0f0304",
         {"0x01\t32\t32\t0x02\t0x07\t4\t", "0x05\t\t\t\t\t4\t0x01"},
         {"02070616eefd0f0102" + kPad + "04", "030706ff7d020f0304" + kPad + "04"}},
    };
    for (const auto& c : cases) {
        std::string capture = TempPath("ble.btsnoop");
        ToolRun run = Tool("--world " + WorldPath("ble-phone-advertising") + " ble advertise " +
                           c.advertise + " --seconds 1 --capture " + capture);
        ASSERT_EQ(run.exitCode, 0) << run.out << run.err;
        std::string fields =
            Tshark(capture, std::string("-Y hci_h4.type==1 -T fields -e ") + kMulti +
                                "subcode -e " + kMulti + "min_interval -e " + kMulti +
                                "max_interval -e " + kMulti + "type -e " + kMulti +
                                "channel_map -e " + kMulti + "instance_id -e " + kMulti + "enable");
        ASSERT_FALSE(fields.empty()) << c.advertise << ": tshark could not read the capture";
        for (const char* line : c.decoded) {
            EXPECT_NE(fields.find(std::string(line) + "\n"), std::string::npos)
                << c.advertise << " lacks " << line << " in:\n"
                << fields;
        }
        std::string json = Tshark(capture, "-T json -x");
        for (const auto& bytes : c.raw) {
            EXPECT_NE(json.find('"' + bytes + '"'), std::string::npos)
                << c.advertise << " lacks the data command " << bytes;
        }
    }
}

}  // namespace
}  // namespace connectkit::test
