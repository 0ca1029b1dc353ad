"""A Chromium without a window, in a folder of its own, that reaches no other machine."""

import json
import os
import re

from selenium import webdriver
from selenium.webdriver.chromium.remote_connection import ChromiumRemoteConnection

import processes
from processes import within

DESKTOP, TABLET, PHONE = (1280, 800), (820, 1180), (390, 844)


class Browser(webdriver.Remote):
    def __init__(self):
        self.folder = processes.private_folder()
        log = f"{self.folder}/driver.log"
        self.process = processes.start("chromedriver", "--port=0", log=log, HOME=self.folder, TMPDIR=self.folder,
                                       XDG_CONFIG_HOME=self.folder, XDG_CACHE_HOME=self.folder)

        def port():
            with open(log, encoding="utf-8") as file:
                return re.search(r"started successfully on port (\d+)", file.read())
        self.driver_port = within(20, port, "chromedriver has started")[1]
        super().__init__(ChromiumRemoteConnection(f"http://127.0.0.1:{self.driver_port}", "goog", "chrome"),
                         options=self.options_())
        self.size(*DESKTOP)

    def options_(self):
        options = webdriver.ChromeOptions()
        for word in ("headless=new", "disable-gpu", "disable-dev-shm-usage", "disable-background-networking",
                     "disable-component-update", "disable-sync", "no-first-run", "disable-breakpad",
                     "host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.*", f"user-data-dir={self.folder}/profile"):
            options.add_argument(f"--{word}")
        if os.getuid() == 0:
            options.add_argument("--no-sandbox")  # Chromium's sandbox refuses root
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        return options

    def stop(self):
        processes.stop(self.process)

    def cdp(self, command, **parameters):
        return self.execute("executeCdpCommand", {"cmd": command, "params": parameters})["value"]

    def size(self, width, height):
        """Of what is seen of a page, to the pixel."""
        self.cdp("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def prefers(self, **features):
        """As a person sets it in the system: prefers(color_scheme="dark", reduced_motion="reduce")."""
        self.cdp("Emulation.setEmulatedMedia", features=[
            {"name": f"prefers-{name.replace('_', '-')}", "value": value} for name, value in features.items()])

    def network(self):
        """What the network did since the last call, as the browser's developer tools tell it."""
        return [json.loads(entry["message"])["message"] for entry in self.get_log("performance")]

    def complaints(self):
        """What the console has got since the last call, except answers to what a test asks on purpose."""
        return [entry["message"] for entry in self.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]
