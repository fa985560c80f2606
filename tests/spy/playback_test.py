# SPDX-License-Identifier: MIT
"""What the spy has recorded, the virtual adapter plays back."""

import base64
import unittest

from spy_kit import OK, SpyTest

MODEM = """
[[device]]
name = "modem"
text = "A demo modem"
[[device.port]]
name = "modem-at"
id = 7
far = "at"
replies = { "ATI" = "Demo modem 1.0", "AT+CSQ" = "+CSQ: 17,99" }
"""

SESSION = (("ATI\\r", "1.0"), ("AT+CSQ\\r", "17,99"), ("ATX\\r", "ERROR"))


class Playback(SpyTest):
    def session(self, scenario, recording):
        self.environment["KOVASMGR_VIRTUAL_SCENARIO"] = str(scenario)
        self.record = recording
        host = self.running_host(RECORD=recording, IDLE_READS="off")
        self.assertEqual(OK, host.open("modem-at"))
        self.assertEqual(OK, host.listen("modem-at"))
        for command, answer in SESSION:
            self.assertEqual(f"{len(command) - 1} 0", host.write("modem-at", command))
            self.assertEqual("yes", host.received(answer))
        self.finish(host)

    def bytes_of(self, call):
        return b"".join(base64.b64decode(line["data"]) for line in self.calls(call))

    def test_a_host_sees_the_same_bytes_and_devices_again(self):
        scenario = self.directory / "modem.toml"
        scenario.write_text(MODEM, encoding="utf-8")
        self.session(scenario, self.directory / "first.jsonl")
        told = self.bytes_of("read"), self.bytes_of("write")
        devices = self.calls("enumerate")[0]["devices"]
        self.assertIn(b"Demo modem 1.0", told[0])
        self.session(self.directory / "first.jsonl", self.directory / "second.jsonl")
        self.assertEqual(told, (self.bytes_of("read"), self.bytes_of("write")))
        self.assertEqual(devices, self.calls("enumerate")[0]["devices"])

    def test_what_was_played_back_plays_back(self):
        scenario = self.directory / "modem.toml"
        scenario.write_text(MODEM, encoding="utf-8")
        last = scenario
        for i in range(3):
            self.session(last, self.directory / f"{i}.jsonl")
            last = self.record
        self.assertIn(b"+CSQ: 17,99", self.bytes_of("read"))


if __name__ == "__main__":
    unittest.main()
