"""Seeing is free, doing needs the token: asked for once, kept in the page's memory alone."""

import http.server
import threading
import time
import unittest

from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select

import page
from board import TOKEN, Board
from case import Case
from processes import within


class ActingTest(Case):
    def setUp(self):
        super().setUp()
        self.browser.get("about:blank")  # so that the page is a new one
        self.open("/#object/fan1-led")
        within(10, lambda: self.one("form.act select"), "the object is shown")

    def one(self, what):
        found = self.browser.find_elements(By.CSS_SELECTOR, what)
        return found[0] if found else None

    def set_led(self, setting):
        Select(self.one("form.act select")).select_by_visible_text(setting)
        self.one("form.act button").click()

    def give_token(self, token):
        self.one("#token input").send_keys(token)
        self.one("#token button[value=ok]").click()

    def result_becomes(self, words):
        within(20, lambda: words in self.one(".result").text, lambda: f"it says \"{self.one('.result').text}\"")

    def setting_becomes(self, setting):
        led = "#box g[data-object=fan1-led]"
        within(20, lambda: self.one(led).get_attribute("data-setting") == setting,
               lambda: f"the LED is {self.one(led).get_attribute('data-setting')}")

    def test_asks_for_the_token_tells_a_wrong_one_and_acts_with_the_right_one(self):
        self.set_led("warning")
        self.give_token("not-the-right-one-000")
        within(10, lambda: "This is not the token of serve." in self.one("#token").text, "the dialog says so")
        self.give_token(TOKEN)
        self.result_becomes("done: warning")
        self.setting_becomes("warning")
        self.set_led("good")  # without being asked again
        self.result_becomes("done: good")
        self.setting_becomes("good")
        self.assertFalse(self.one("#token").is_displayed())

    def test_the_token_is_nowhere_but_in_the_memory_of_the_page(self):
        self.browser.network()
        self.set_led("bad")
        self.give_token(TOKEN)
        self.result_becomes("done: bad")
        requests = [one["params"]["request"] for one in self.browser.network() if one["method"] == "Network.requestWillBeSent"]
        self.assertTrue(any(one["method"] == "POST" for one in requests))
        for one in requests:
            self.assertNotIn(TOKEN, one["url"])
            self.assertNotIn(TOKEN, one.get("postData", ""))
        self.assertEqual(self.browser.execute_script(
            "return JSON.stringify( [ { ...localStorage }, { ...sessionStorage }, document.cookie, location.href ] )"),
            f'[{{}},{{}},"","{self.board.url}/#object/fan1-led"]')
        self.assertNotIn(TOKEN, self.browser.page_source)
        self.browser.refresh()
        page.wait_for_link(self.browser, "live")
        within(10, lambda: self.one("form.act select"), "the object is shown")
        self.set_led("off")
        within(10, lambda: self.one("#token").is_displayed(), "the new page asks again")

    def test_who_gives_no_token_changes_nothing(self):
        self.set_led("inactive")
        self.one("#token button[value=no]").click()
        self.result_becomes("not done: without the token nothing is done")
        self.assertNotIn("inactive", [one.get("value") for one in self.board.get("/v1/objects/fan1-led")["values"]])

    def test_acknowledges_a_cause(self):
        self.board.sim("set temp-cpu temperature 99")
        self.addCleanup(self.board.sim, "set temp-cpu temperature 47")
        button = within(20, lambda: self.one("#causes button.acknowledge"), "the cause is shown")
        self.assertEqual(button.accessible_name, "Acknowledge temp-cpu temperature limit")
        button.click()
        self.give_token(TOKEN)
        within(10, lambda: self.board.causes()[0]["acknowledged"], "serve knows it")
        within(10, lambda: "acknowledged" in self.one("#causes li .since").text, "the page says so")
        self.assertIsNone(self.one("#causes button.acknowledge"))

    def test_what_was_not_acknowledged_is_told_for_a_while(self):
        self.board.sim("set temp-cpu temperature 99")
        self.addCleanup(self.board.sim, "set temp-cpu temperature 47")
        within(20, lambda: self.one("#causes button.acknowledge"), "the cause is shown").click()
        self.one("#token button[value=no]").click()
        told = time.monotonic()
        within(5, lambda: self.read()["status"] == "Not acknowledged: without the token nothing is done", "the page says so")
        within(20, lambda: self.read()["status"] == "1 cause", lambda: self.read()["status"])
        self.assertGreater(time.monotonic() - told, 5)

    def test_what_is_refused_is_told(self):
        self.browser.execute_script("location.hash = '#object/fan1'")
        within(10, lambda: self.one("#act-rest"), "the fan is shown")
        self.one("#act-rest").send_keys("fast")
        self.one("form.act button").click()
        self.give_token(TOKEN)
        self.result_becomes('"fast" is not a valid RPM')
        self.one("#act-rest").clear()
        self.one("#act-rest").send_keys("12000")
        self.one("form.act button").click()  # the token was right, and is not asked for again
        self.result_becomes("done: 12000")

    def test_a_page_of_another_server_is_refused(self):
        class Other(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.send_response(200)
                self.end_headers()
                self.wfile.write(b"<title>another</title>")

            def log_message(self, *_):
                pass
        with http.server.ThreadingHTTPServer(("127.0.0.1", 0), Other) as other:
            threading.Thread(target=other.serve_forever, daemon=True).start()
            self.browser.get(f"http://127.0.0.1:{other.server_address[1]}/")
            answer = self.browser.execute_async_script("""
               const done = arguments[ arguments.length - 1 ];
               fetch( arguments[ 0 ], { method: 'POST', mode: 'no-cors', body: '{"words":["bad"]}' } )
                  .then( () => fetch( arguments[ 0 ] ) ).then( () => done( 'read' ), () => done( 'refused' ) );
            """, f"{self.board.url}/v1/objects/fan2-led/action")
            other.shutdown()
        self.assertEqual(answer, "refused")
        self.assertEqual(self.board.get("/v1/objects/fan2-led")["values"], [])
        status, words = self.board.post("/v1/objects/fan2-led/action", {"words": ["bad"]},
                                        Origin="http://elsewhere", Authorization=f"Bearer {TOKEN}")
        self.assertEqual(status, 403, words)


class ReadOnlyTest(Case):
    @classmethod
    def make_board(cls):
        return Board(control=False)

    def test_without_a_token_acting_is_not_offered_and_it_says_why(self):
        self.board.sim("set temp-cpu temperature 99")
        self.board.becomes("critical", "temp-cpu temperature limit")
        self.open("/#object/fan1-led")
        found = within(10, lambda: self.browser.find_elements(By.CSS_SELECTOR, "#object .readonly"), "it says why")
        self.assertEqual(found[0].text, "This page only shows: serve runs without --http-control.")
        within(10, lambda: self.read()["causes"], "the cause is shown")
        for what in ("form.act", "button.acknowledge"):
            self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, what), [], what)


if __name__ == "__main__":
    unittest.main()
