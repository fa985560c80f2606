// SPDX-License-Identifier: MIT
#include "tools/kovasctl/command.h"

const std::vector<Command>& Commands() {
    static const std::vector<Command> commands = {
        {"list", "show the devices and their ports", "Exit status 1 when there is no device.",
         "  kovasctl list\n"
         "  kovasctl list --json | jq -r '.devices[].ports[].name'",
         true, SetUpList},
        {"watch", "tell of devices that come and go",
         "One line for each device, or port of a device, that comes or goes.",
         "  kovasctl watch\n"
         "  kovasctl watch --count 1 --timeout 30",
         true, SetUpWatch},
        {"term", "talk to a port by hand",
         "An interactive terminal. Waits for the device, and connects again when it comes back.",
         "  kovasctl term ttyUSB0 --line 115200,8n1\n"
         "  kovasctl term modem --echo --log modem.txt",
         false, SetUpTerm},
        {"send", "send bytes to a port",
         "Sends TEXT, standard input ('-'), a file or hexadecimal bytes, all of it or fails.",
         "  kovasctl send ttyUSB0 'AT' --eol cr\n"
         "  kovasctl send 3 --file firmware.bin",
         false, SetUpSend},
        {"receive", "write what a port sends to standard output",
         "Ends at the first of its limits; without one, when it is interrupted.",
         "  kovasctl receive sensor --count 1024 > readings.txt\n"
         "  kovasctl receive modem-0 --send 'ATI\\r' --escapes --until OK --timeout 5",
         false, SetUpReceive},
        {"doctor", "find out why it does not work",
         "Looks at the adapter and at every port, or at the one named, and says what mends it.\n"
         "Ports that are nodes of the system are not opened, because that raises DTR, which some\n"
         "devices take for a reset; --open does. Other ports are opened for a moment.\n"
         "Exit status 1 when there is a problem.",
         "  kovasctl doctor\n"
         "  kovasctl doctor ttyUSB0 --open",
         true, SetUpDoctor},
        {"adapter-info", "show the facts of an adapter library",
         "Loads the library in a process of its own and opens nothing. DIR is an adapter's\n"
         "directory or name. Exit status 1 when the library cannot be used.",
         "  kovasctl adapter-info virtual\n"
         "  kovasctl adapter-info build/release/adapters/mine",
         true, SetUpAdapterInfo},
        {"check-adapter", "try an adapter library against the rules of OSAdapt.h",
         "Tries each rule in a process of its own, and says what happens to a host when it is\n"
         "broken. DIR is an adapter's directory or name. Ports are opened when they are named by\n"
         "--port; rules on notices take --unplug and --plug. Exit status 1 when a rule is broken.",
         "  kovasctl check-adapter build/release/adapters/mine\n"
         "  kovasctl check-adapter virtual --port virtual-modem-0 \\\n"
         "      --unplug 'kovasmgr-virtual --pid $KOVASMGR_HOST_PID pull virtual-modem' \\\n"
         "      --plug 'kovasmgr-virtual --pid $KOVASMGR_HOST_PID plug virtual-modem'",
         true, SetUpCheckAdapter},
        {"stats", "show what a host does with its ports",
         "For a host that runs with the spy adapter: bytes, calls, short writes, failures and the\n"
         "longest call of each port, shown anew each second until the host ends.",
         "  kovasctl stats\n"
         "  kovasctl stats --once --json | jq '.ports[].bytes_in'",
         true, SetUpStats},
        {"sim", "run a host on simulated devices",
         "Runs the host behind '--' on the devices of a scenario, passes signals on to it and "
         "ends\n"
         "with its exit status; 1 when it was to leave events or a recording and has not. Without "
         "a\n"
         "host it is one itself: it opens every port and shows what comes, goes and arrives, "
         "until\n"
         "the scenario ends.",
         "  kovasctl sim --list\n"
         "  kovasctl sim flaky-cable --speed 2\n"
         "  kovasctl sim modem --stop --events events.jsonl -- ./my-host --verbose\n"
         "  kovasctl sim --do pull modem",
         true, SetUpSim},
    };
    return commands;
}
