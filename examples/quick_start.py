# SPDX-License-Identifier: MIT
"""Lists the devices, opens the first port, sends a line, shows what comes back and what comes and goes."""

import sys
import time

import kovasmgr

try:
    with kovasmgr.Library(".") as library, library.watch(print):  # libOSAdapt.so is loaded from here
        snapshot = library.snapshot()
        for device in snapshot.devices:
            print(f"{device.name} ({device.text})")
            for info in device.ports:
                print(f"  {info.id}: {info.name}")
        # What the port receives is printed by the library's read thread.
        with library.open(snapshot.devices[0].ports[0], lambda data: print(data.decode())) as port:
            port.write(b"ATI\r")
            time.sleep(1)  # the answer arrives meanwhile
except (kovasmgr.Error, OSError, IndexError) as error:
    sys.exit(f"quick_start: {error}")
