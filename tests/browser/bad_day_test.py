"""The bad day is played while the page is looked at: at each step it shows what HTTP tells."""

import re
import unittest

import page
from board import KELT
from case import Case
from processes import within

# What serve tells after a command of the scenario; the others change numbers alone.
FOLLOWS = {
    "pull psu2": ("warning", "psu2-slot absent"),
    "stall fan3.inlet": ("critical", "fan3-inlet speed limit"),
    "insert psu2": ("clear", "psu2-slot absent"),
    "free fan3.inlet": ("clear", "fan3-inlet speed limit"),
    "pull fan1": ("warning", "fan1-slot absent"),
    "insert fan1": ("clear", "fan1-slot absent"),
    "nack mux-main": ("critical", "multiplexer 0x70 on scd(4):1:2 silent"),
    "clear mux-main": ("clear", "multiplexer 0x70 on scd(4):1:2 silent"),
    "nack temp-board": ("warning", "temp-board silent"),
    "clear temp-board": ("clear", "temp-board silent"),
    "stuck psu1": ("critical", "bus scd(4):1:4 held"),
    "clear psu1": ("clear", "bus scd(4):1:4 held"),
    "set psu2 line 0": ("critical", "psu2 input lost"),
    "set temp-cpu temperature 99": ("critical", "temp-cpu temperature limit"),
    "stall fan4.outlet": ("critical", "fan4-outlet speed limit"),
    "stuck temp-front": ("critical", "bus scd(4):1:2 held behind 0x70=1"),
    "clear temp-front": ("clear", "bus scd(4):1:2 held behind 0x70=1"),
    "free fan4.outlet": ("clear", "fan4-outlet speed limit"),
    "set temp-cpu temperature 47": ("clear", "temp-cpu temperature limit"),
    "set psu2 line 230": ("warning", "psu2 input lost"),
}
LEVELS = ["ok", "indeterminate", "warning", "critical"]


def commands():
    """Those of the scenario, in their order."""
    with open(f"{KELT}/scenarios/bad-day.scenario", encoding="utf-8") as file:
        for line in file:
            found = re.match(r"at \d+s (.*?)\s*(#.*)?$", line)
            if found and found[1] != "list":
                yield found[1]


def told_by_serve():
    """Level and cause of each line of what serve tells on that day."""
    with open(f"{KELT}/scenarios/bad-day.events", encoding="utf-8") as file:
        return {tuple(re.match(r"(\w+) ([^:]*(?::\d+)*[^:]*)(: |$)", line.strip()).groups()[:2])
                for line in file if not line.startswith(("#", ">"))}


def is_shown(value, words):
    """Whether these are the words of what HTTP tells of a value, to the last digit that they have."""
    told = value.get("value")
    if told is None:
        return words in ("—", value["state"])
    if isinstance(told, bool):
        return words == ("yes" if told else "no")
    if isinstance(told, str):
        return words == told
    number = re.match(r"-?\d+(?:\.(\d+))?", words)
    return bool(number) and abs(float(number[0]) - told) <= 0.501 * 10 ** -len(number[1] or "")


class BadDayTest(Case):
    seconds = 400

    def places(self):
        """The level of each place on the box, worked out from what HTTP tells."""
        wiring = {one["name"]: one for one in self.board.get("/v1/wiring")["objects"]}
        drawn = [place["object"] for side in self.board.get("/v1/panel")["sides"] for place in side["places"]]
        levels = {name: ["ok"] for name in drawn}
        for one in self.board.get("/v1/objects")["objects"]:
            place = next((name for name in [one["name"], *wiring[one["name"]]["on"]] if name in levels), None)
            if place and not one.get("absent"):
                levels[place].append(one["level"])
        return {name: max(several, key=LEVELS.index) for name, several in levels.items()}

    def differences(self):
        """Where the page is not what HTTP tells."""
        page.whole(self.browser)
        shown = self.read()
        causes = self.board.causes()
        told = {
            "causes": [[one["cause"], one["level"], one["words"], one["explains"]] for one in causes],
            "numbers": [str(i + 1) for i in range(len(causes))],
            "places": self.places(),
            "held": {one["bus"]: one["held"] for one in self.board.get("/v1/busses")["busses"] if "held" in one},
            "events": sorted(([one["id"], one["words"]] for one in self.board.get("/v1/events")["events"]), reverse=True)[:200],
        }
        seen = {
            "causes": [[one["cause"], one["level"], one["words"],
                        [name for name in re.sub("^explains ", "", one["explains"]).split(", ") if name]]
                       for one in shown["causes"]],
            "numbers": [one["number"] for one in shown["causes"]],
            "places": {name: one["level"] for name, one in shown["places"].items()},
            "held": shown["heldBusses"],
            "events": [[one["id"], one["words"]] for one in shown["events"]],
        }
        return {what: [told[what], seen[what]] for what in told if told[what] != seen[what]}

    def value_differences(self, name):
        shown = self.read()["object"]
        told = self.board.get(f"/v1/objects/{name}")
        found = {}
        for value in told["values"]:
            seen = shown["values"].get(value["name"])
            if not seen or seen["level"] != value.get("level") or not is_shown(value, seen["value"]):
                found[value["name"]] = [value, seen]
        return found

    def test_shows_at_each_step_what_http_tells(self):
        self.open()
        self.assertTrue(set(FOLLOWS) <= set(commands()), "the scenario has other commands now")
        for command in commands():
            with self.subTest(after=command):
                self.board.sim(command)
                if command not in FOLLOWS:
                    continue
                self.board.becomes(*FOLLOWS[command])
                within(20, lambda: not self.differences(), lambda: f"page and HTTP differ: {self.differences()}")
                name = next((one.get("object") or one["explains"][0] for one in self.board.causes()
                             if one["cause"] == FOLLOWS[command][1]), "psu1")
                if self.board.get(f"/v1/objects/{name}")["values"]:
                    page.open_object(self.browser, name)
                    within(20, lambda: not self.value_differences(name),
                           lambda: f"{name}: page and HTTP differ: {self.value_differences(name)}")
        self.board.run("orbis-host", "smbus", "psu2-status", "clear-faults")
        self.board.becomes("clear", "psu2 input lost")
        within(20, lambda: self.read()["status"] == "Nothing is wrong", lambda: self.read()["status"])
        told = {("clear" if one["what"] == "clear" else one["level"], one["cause"])
                for one in self.board.get("/v1/events")["events"] if one["what"] in ("set", "clear")}
        self.assertLessEqual(told_by_serve(), told)


if __name__ == "__main__":
    unittest.main()
