# SPDX-License-Identifier: MIT
"""What is promised. Each row: what, the tests that would break it, what the last run measured, limits."""
import json

from promise import Promise, Verdict
from stages import HOUR

ALL = ("release", "asan", "tsan")
MINUTES = 40


def _in(stages, pattern):
    return [f"{stage}:{pattern}" for stage in stages]


FAILURES = [
    Promise("failures", "Whichever allocation fails, once or with all later ones: no crash, no lock left "
            "held, no descriptor or thread lost, and the library can be released and initialised again",
            _in(ALL, r"^(EveryAllocation|WithoutMemory|AReadThread)\."),
            "{release:failures.allocations} allocations, each refused alone, and "
            "{release:failures.allocations_and_all_later} with all later ones",
            ["release:failures.allocations >= 100", "release:failures.allocations_and_all_later >= 100"]),
    Promise("failures", "Whichever call of the adapter fails, once or with all later ones, or throws: the same. "
            "A read that throws is the exception: it ends the process",
            _in(ALL, r"^(EveryAdapter(Call|Read)|AdapterRead)\."),
            "{release:failures.adapter_calls} calls fail, {release:failures.adapter_calls_that_throw} throw, "
            "{release:failures.adapter_calls_without_memory} throw for want of memory, "
            "the first {release:failures.adapter_reads} reads fail",
            ["release:failures.adapter_calls >= 15", "release:failures.adapter_calls_that_throw >= 15",
             "release:failures.adapter_calls_without_memory >= 15", "release:failures.adapter_reads >= 5"]),
    Promise("failures", "A thread that cannot be started: the same", _in(ALL, r"^EveryThreadStart\."),
            "{release:failures.thread_starts} starts", ["release:failures.thread_starts >= 1"]),
    Promise("failures", "Whichever writing or flushing of the log fails, once or with all later ones: nothing is lost "
            "but log lines, and no result changes", _in(ALL, r"^EveryWriteOfTheLog\."),
            "{release:failures.log_calls} calls",
            ["release:failures.log_calls >= 250", "release:failures.log_calls_and_all_later >= 250"]),
    Promise("failures", "A log that cannot be opened: `KOVAMGR_Init` answers 20002, nothing stays behind, and with "
            "another directory it works", _in(ALL, r"^EveryOpeningOfTheLog\."),
            "{release:failures.log_openings} openings", ["release:failures.log_openings >= 2"]),
    Promise("failures", "A disk that is full: nothing is lost but log lines",
            _in(ALL, r"^FullDisk\.LosesLogLinesAndNothingElse$")),
    Promise("failures", "and a log that may not grow: the same", _in(ALL, r"^FullDisk\.IsLikeALogThatMayNotGrow$")),
]

UNPLUG = [
    Promise("unplug", "A device pulled out just before, during or just after an open, a write, a running read "
            "callback, a close, a registration, an enumeration, a release: one notice each, no hang, no spin, "
            "no leak, every handle accounted for; each interleaving fixed",
            _in(ALL, r"/Unplugging\.|^UnpluggingAtTheEnd\."), "{release:unplug.cells_fake} interleavings",
            ["release:unplug.cells_fake >= 100"]),
    Promise("unplug", "The same on the kernel's terminals, at random moments",
            _in(ALL, r"/UnpluggingTerminals\."), "{release:unplug.rounds} rounds of "
            "{release:unplug.cells_terminals} kinds; where both sides race, the call came first "
            "{release:unplug.terminal_outcomes_before} times and the pull-out "
            "{release:unplug.terminal_outcomes_after} times",
            ["release:unplug.cells_terminals >= 80", "release:unplug.rounds >= 2000",
             "release:unplug.terminal_outcomes_before >= 100",
             "release:unplug.terminal_outcomes_after >= 100"]),
]

CALLBACKS = [
    Promise("callbacks", "Each function called from inside each kind of callback does what the header says",
            _in(ALL, r"/InsideCallback\.|^StateRegistrationInsideAReadCallback\."),
            "{release:callbacks.inside_calls} calls", ["release:callbacks.inside_calls >= 82"]),
    Promise("callbacks", "Lists of callbacks may grow and shrink while they are walked",
            _in(ALL, r"^CallbackListWalk\."),
            "{release:callbacks.read_walks} and {release:callbacks.state_walks} random walks",
            ["release:callbacks.read_walks >= 10000", "release:callbacks.state_walks >= 10000"]),
    Promise("callbacks", "After an un-registration, a close or a release has returned, no callback of it runs "
            "or will run; random schedules, under the thread sanitizer",
            _in(ALL, r"^(Read|State|Release)Silence\."),
            "under the thread sanitizer {tsan:callbacks.rounds} un-registrations, {tsan:callbacks.close_rounds} closes, "
            "{tsan:callbacks.notice_rounds} of device-state callbacks, {tsan:callbacks.releases} releases",
            ["tsan:callbacks.rounds >= 10000", "tsan:callbacks.close_rounds >= 10000",
             "tsan:callbacks.notice_rounds >= 10000"]),
]

MODEL = [
    Promise("model", "Results, log lines, both lists, handles and the adapter's calls are those of a small model, "
            "quirks included, whatever the sequence of arrivals, removals, opens and closes",
            _in(ALL, r"/RandomSequences\."), "{release:model.sequences} sequences of {release:model.steps} steps",
            ["release:model.sequences >= 100000"]),
    Promise("model", "The same by the exported functions, with the read thread at work",
            _in(ALL, r"/ThreadedSequences\."), "{release:model.threaded_sequences} sequences"),
]

FUZZING = [
    Promise("fuzzing", text, [f"fuzz:^fuzz\\.{name}$", *_in(ALL, rf"^fuzz\.{name}\.corpus$")],
            f"{{fuzz:fuzz.{name}.executions}} executions in {{fuzz:fuzz.{name}.seconds}} s",
            [f"fuzz:fuzz.{name}.seconds >= 60"], [f"fuzz:fuzz.{name}.seconds >= {HOUR}"])
    for name, text in [
        ("enumeration", "No enumeration record breaks the lists, whatever the adapter has written into it"),
        ("api_sequence", "No sequence of calls and adapter answers differs from the model"),
        ("log_format", "No text that reaches the log as a format reads foreign memory, and each is one bounded line"),
        ("byte_search", "Byte search answers what a sliding comparison does, and reads nothing beside its bytes"),
        ("scenario", "No scenario file harms the virtual adapter: each is read, or refused with a reason"),
        ("sentence", "Nor does any sentence or control command"),
    ]
]

SOAK = [
    Promise("soak", "Under load, with devices coming and going and calls failing, no byte is lost, doubled or out "
            "of order on the ports that stay", _in(("soak", "asan", "tsan"), r"^soak$"),
            "{soak:soak.bytes} bytes, {soak:soak.notices} notices "
            "({soak:soak.notices_per_second} a second), {soak:soak.faults} faults in "
            "{soak:soak.seconds} s; longest call {soak:soak.longest_call_ms} ms",
            ["soak:soak.seconds >= 120", "soak:soak.notices_per_second >= 90"],
            [f"soak:soak.seconds >= {HOUR}"]),
    Promise("soak", "Memory, descriptors and threads stay flat", ["soak:^soak$"],
            "{soak:soak.memory_growth_kb} kB resident, {soak:soak.allocated_growth_kb} kB allocated, "
            "{soak:soak.descriptors_growth} descriptors, {soak:soak.threads_growth} threads more at the end",
            ["soak:soak.memory_growth_kb <= 4096", "soak:soak.allocated_growth_kb <= 256",
             "soak:soak.descriptors_growth <= 0", "soak:soak.threads_growth <= 0"]),
]

CODE = [
    Promise("code", "Every line and every branch of the library is reached by its own tests",
            ["coverage:"], "{coverage:coverage.lines_percent:1} % of {coverage:coverage.lines} lines, "
            "{coverage:coverage.branches_percent:1} % of {coverage:coverage.branches} branches, "
            "{coverage:coverage.exclusions} exclusions",
            ["coverage:coverage.lines_percent >= 100", "coverage:coverage.branches_percent >= 100"]),
    Promise("code", "The library's tests pass under the address, leak and undefined-behaviour sanitizers",
            ["asan:.", "asan:"]),
    Promise("code", "and under the thread sanitizer", ["tsan:.", "tsan:"]),
    Promise("code", "Hosts' tests pass under valgrind, without a definite leak", ["valgrind:.", "valgrind:"]),
    Promise("code", "clang-tidy and cppcheck find nothing in the library and in what adapters share, clang-format "
            "nowhere", ["lint:"]),
    Promise("code", "The Linux adapter works on a real kernel", ["kernel:^real_kernel"]),
]


def of_time(seen, is_everything):
    minutes = sum(stage["seconds"] for stage in seen.stages.values()) / 60
    promise = Promise("code", f"All this is proved in at most {MINUTES} minutes on two processors", [])
    if not is_everything or seen.is_long:
        return []
    return [Verdict(promise, f"{minutes:.1f} minutes", ["late"] if minutes > MINUTES else [])]


def of_speed(results, stages):
    """What bench/prove has judged."""
    measured = results / "performance.json"
    if "speed" not in stages:
        return []
    rows = json.loads(measured.read_text())["promises"] if measured.exists() else []
    verdicts = []
    for row in rows:
        bound = f"{'at most' if row['is_most'] else 'at least'} {row['limit']:g} {row['unit']}"
        verdicts.append(Verdict(Promise("speed", row["what"], ["speed:bench/prove"]),
                                f"{row['measured']:.4g} {row['unit']}, promised {bound}",
                                [] if row["held"] else ["missed"]))
    return verdicts or [Verdict(Promise("speed", "Speed", []), "", ["bench/prove has left nothing"])]


def groups():
    return ["failures", "unplug", "callbacks", "model", "fuzzing", "soak", "code"]


def shown_by(stages):
    """The promises that need no other stages than these."""
    everything = [*FAILURES, *UNPLUG, *CALLBACKS, *MODEL, *FUZZING, *SOAK, *CODE]
    return [promise for promise in everything if promise.stages() <= set(stages)]


def table(verdicts):
    """A row each: promise, tests, figure, held or broken and why."""
    rows = ["promise | shown by | figure | "]
    for verdict in verdicts:
        end = "held" if verdict.is_held else "BROKEN: " + "; ".join(verdict.reasons)
        shown_by = verdict.promise.shown_by().replace("`", "")
        rows.append(f"{verdict.promise.text} | {shown_by} | {verdict.figure} | {end}")
    return "\n".join(rows)
