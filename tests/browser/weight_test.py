"""The page is light, needs no other machine, and its browser has nothing to complain of."""

import unittest
from urllib.parse import urlsplit

import page
from board import break_four
from case import Case
from processes import within

MOST = 500_000  # bytes of all files of the page together
TYPES = {"": "text/html", "html": "text/html", "js": "text/javascript", "css": "text/css", "svg": "image/svg+xml"}


class Network:
    """What the browser asked for, and what it got."""

    def __init__(self, browser):
        self.browser, self.asked, self.got, self.bytes, self.sent = browser, {}, {}, {}, {}

    def read(self):
        for event in self.browser.network():
            told = event.get("params", {})
            one = told.get("requestId")
            if event["method"] == "Network.requestWillBeSent":
                self.asked[one] = told["request"]["url"]
            elif event["method"] == "Network.responseReceived":
                self.got[one] = told["response"]
            elif event["method"] == "Network.requestWillBeSentExtraInfo":
                self.sent[one] = {name.lower(): value for name, value in told["headers"].items()}
            elif event["method"] == "Network.responseReceivedExtraInfo":
                self.sent.setdefault(one, {})["answered"] = told["statusCode"]
            elif event["method"] == "Network.loadingFinished":
                self.bytes[one] = told["encodedDataLength"]
        return self

    def files(self):
        """The page itself, and all that is in its folder."""
        return {one: url for one, url in self.asked.items()
                if urlsplit(url).path == "/" or urlsplit(url).path.startswith("/panel/")}


class WeightTest(Case):
    def setUp(self):
        super().setUp()
        self.browser.get("about:blank")
        self.browser.cdp("Network.clearBrowserCache")
        self.browser.network()
        self.browser.complaints()
        self.open("/")

    def loaded(self):
        network = Network(self.browser)
        within(10, lambda: len(network.read().files()) > 10 and all(one in network.bytes for one in network.files()),
               lambda: f"all is loaded: {network.files()}")
        return network

    def test_all_files_of_the_page_are_less_than_500_kb(self):
        network = self.loaded()
        self.assertGreater(sum(network.bytes[one] for one in network.files()), 10_000)
        self.assertLess(sum(network.bytes[one] for one in network.files()), MOST)

    def test_each_file_has_its_content_type(self):
        network = self.loaded()
        for one, url in network.files().items():
            self.assertEqual(network.got[one]["status"], 200, url)
            name = urlsplit(url).path.rpartition("/")[2]
            self.assertEqual(network.got[one]["mimeType"], TYPES[name.rpartition(".")[2]], url)
            told = {header.lower(): value for header, value in network.got[one]["headers"].items()}
            self.assertEqual(told["x-content-type-options"], "nosniff", url)

    def test_a_reload_gets_only_what_has_changed(self):
        self.loaded()
        self.browser.refresh()
        page.wait_for_link(self.browser, "live")
        network = self.loaded()
        for one, url in network.files().items():
            self.assertIn("if-none-match", network.sent[one], url)
            self.assertEqual(network.sent[one]["answered"], 304, url)
        self.assertLess(sum(network.bytes[one] for one in network.files()), 20_000)

    def test_the_page_in_use_asks_no_other_host_and_its_console_has_no_complaint(self):
        break_four(self.board)
        for name in ("psu2", "temp-cpu", "fan4-outlet", "temp-front", "fan1-led", "qsfp3", "psu2-slot"):
            self.browser.execute_script("location.hash = `#object/${ arguments[ 0 ] }`", name)
            within(10, lambda wanted=name: (self.read()["object"] or {}).get("name") == wanted
                   and self.browser.execute_script("return document.querySelector( '#object .why' ).hasChildNodes()"),
                   f"{name} is open, and why it is so")
        self.browser.find_element("css selector", "#object .close").click()
        within(10, lambda: self.read()["object"] is None, "the object is closed")
        self.browser.execute_script("document.querySelector( '#busses a.bus' ).click()")
        within(10, lambda: self.browser.execute_script("return document.querySelector( '#object table.chips' ) !== null"),
               "a bus is open")
        self.browser.find_element("id", "filter").send_keys("psu2 critical")
        within(10, lambda: self.read()["events"] and all("psu2" in one["text"] for one in self.read()["events"]),
               "the events are those of psu2")
        self.browser.find_element("id", "name").send_keys("fan1-led")
        self.browser.find_element("css selector", "#find button").click()
        within(10, lambda: (self.read()["object"] or {}).get("name") == "fan1-led", "the object that was asked for is open")
        network = Network(self.browser).read()
        hosts = {urlsplit(url).netloc for url in network.asked.values() if urlsplit(url).scheme not in ("about", "data")}
        self.assertEqual(hosts, {urlsplit(self.board.url).netloc})
        self.assertEqual({one["url"]: one["status"] for one in network.got.values() if one["status"] >= 400}, {})
        self.assertEqual(self.browser.complaints(), [])

    def test_the_policy_of_the_page_refuses_scripts_and_styles_in_its_text(self):
        ran = self.browser.execute_script("""
            const script = document.createElement( 'script' ), box = document.createElement( 'p' );
            script.textContent = 'window.ran = true';
            box.setAttribute( 'style', 'position: fixed' );
            document.body.append( script, box );
            return [ window.ran === true, getComputedStyle( box ).position ];""")
        self.assertEqual(ran, [False, "static"])
        self.assertEqual(len([one for one in self.browser.complaints() if "Content Security Policy" in one]), 2)


if __name__ == "__main__":
    unittest.main()
