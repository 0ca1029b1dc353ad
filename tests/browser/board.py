"""The simulated Kelt board with its server and `orbis-host serve`, for one test."""

import json
import os
import re
import subprocess
import urllib.error
import urllib.request

import processes
from processes import within

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
KELT = os.path.join(ROOT, "boards/kelt")
BIN = os.path.join(os.path.realpath(os.environ.get("ORBIS_BUILD", os.path.join(ROOT, "build/release"))), "bin")
TOKEN = "0123456789abcdefTOKEN"


class Board:
    """`control`: whether serve has a token. `address`: where it listens."""

    def __init__(self, control=True, board=KELT, address="127.0.0.1"):
        self.folder = processes.private_folder()
        self.board, self.control, self.address = board, control, address
        self.environment = {"ORBIS_SMBUS_SOCKET": f"{self.folder}/smbus.sock",
                            "ORBIS_HOST_SOCKET": f"{self.folder}/host.sock", "ORBIS_BOARD": board}
        self.token_file = f"{self.folder}/token"
        with open(os.open(self.token_file, os.O_WRONLY | os.O_CREAT, 0o600), "w", encoding="utf-8") as file:
            file.write(TOKEN + "\n")
        self.port = 0
        self.start_server()
        self.start_serve()
        within(30, self.is_read, "serve has read the board")

    def stop(self):
        for process in (self.serve, self.server):
            processes.stop(process)

    def start_server(self):
        for name in ("smbus.sock", "smbus.sock.control"):
            if os.path.exists(f"{self.folder}/{name}"):
                os.unlink(f"{self.folder}/{name}")
        self.server = processes.start(
            f"{BIN}/orbis-smbusd", "--simulate", f"{self.board}/topology.json", "--simulation",
            f"{self.board}/simulation.json", log=f"{self.folder}/server.log", **self.environment)
        within(20, lambda: os.path.exists(f"{self.folder}/smbus.sock.control"), lambda: self.log("server"))

    def start_serve(self):
        """At the same port as before, if it ran before."""
        log = f"{self.folder}/serve.log"
        if os.path.exists(log):
            os.unlink(log)
        wide = ["--http-any-address"] if not self.address.startswith("127.") else []
        acting = ["--http-control", self.token_file] if self.control else []
        self.serve = processes.start(f"{BIN}/orbis-host", "serve", self.board, "--http",
                                     f"{self.address}:{self.port}", *wide, *acting, log=log, **self.environment)
        found = within(20, lambda: re.search(re.escape(self.address) + r":(\d+)", self.log("serve")),
                       lambda: f"serve tells its port\n{self.log('serve')}")
        self.port = int(found[1])
        self.url = f"http://127.0.0.1:{self.port}"

    def log(self, name):
        try:
            with open(f"{self.folder}/{name}.log", encoding="utf-8") as file:
                return file.read()
        except FileNotFoundError:
            return ""

    def is_read(self):
        try:
            return self.get("/v1/health")["level"] == "ok"
        except OSError:
            return False

    def get(self, path):
        with urllib.request.urlopen(self.url + path, timeout=10) as answer:
            return json.load(answer)

    def post(self, path, body, **headers):
        """The status and the text of the answer."""
        request = urllib.request.Request(self.url + path, json.dumps(body).encode(), headers)
        try:
            with urllib.request.urlopen(request, timeout=10) as answer:
                return answer.status, answer.read().decode()
        except urllib.error.HTTPError as refused:
            return refused.code, refused.read().decode()

    def run(self, program, *words):
        done = subprocess.run([f"{BIN}/{program}", *words], capture_output=True, text=True, timeout=30, check=False,
                              env={**os.environ, **self.environment})
        if done.returncode:
            raise AssertionError(f"{program} {' '.join(words)}: {done.stderr}")
        return done.stdout

    def sim(self, command):
        """As `orbis-smbus sim`: "pull psu2"."""
        return self.run("orbis-smbus", "sim", *command.split())

    def causes(self):
        return self.get("/v1/health")["causes"]

    def becomes(self, level, cause, seconds=30):
        """Waits until health tells the cause at this level, or no more ("clear")."""
        def found():
            levels = {one["cause"]: one["level"] for one in self.causes()}
            return levels.get(cause, "clear") == level
        within(seconds, found, lambda: f"{level} {cause}; health tells {self.causes()}")

    def child(self):
        """The process with the plug-in."""
        with open(f"/proc/{self.serve.pid}/task/{self.serve.pid}/children", encoding="ascii") as file:
            return [int(word) for word in file.read().split()]


FOUR = {  # what is done to the board, and what follows from it
    "set psu2 line 0": "psu2 input lost",
    "set temp-cpu temperature 99": "temp-cpu temperature limit",
    "stall fan4.outlet": "fan4-outlet speed limit",
    "stuck temp-front": "bus scd(4):1:2 held behind 0x70=1",
}


def break_four(board):
    for command in FOUR:
        board.sim(command)
    for cause in FOUR.values():
        board.becomes("critical", cause)
