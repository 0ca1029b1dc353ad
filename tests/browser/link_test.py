"""The page says when it isn't told anything any more, and how old all is, and comes back by itself."""

import os
import re
import signal
import unittest

import page
import processes
from case import Case
from processes import within


class LinkTest(Case):
    def setUp(self):
        super().setUp()
        self.open("/#object/temp-cpu")
        within(10, lambda: self.read()["object"]["values"], "the object is shown")

    def status_becomes(self, words, seconds=30):
        within(seconds, lambda: words in self.read()["status"], lambda: f"it says \"{self.read()['status']}\"")

    def expect_old(self):
        """The age of all, and of the object that is open, grows."""
        page.wait_for_link(self.browser, "lost")
        self.assertIn("Connection lost", self.read()["status"])
        self.assertRegex(self.read()["age"], r"^from \d\d:\d\d:\d\d, .* ago$")
        age = "return document.querySelector( '#object tr[data-value=temperature] .age' ).textContent"
        within(20, lambda: re.match(r"([4-9]\.|\d\d )", self.browser.execute_script(age)),
               lambda: f"the value is {self.browser.execute_script(age)} old")

    def expect_live(self):
        page.wait_for_link(self.browser, "live", 30)
        self.status_becomes("Nothing is wrong")
        self.assertRegex(self.read()["age"], r"^\d\d:\d\d:\d\d$")

    def test_says_that_serve_is_gone_and_comes_back_with_it(self):
        processes.stop(self.board.serve)
        self.expect_old()
        self.board.start_serve()
        self.expect_live()

    def test_says_that_serve_tells_nothing_and_goes_on_when_it_does(self):
        os.kill(self.board.serve.pid, signal.SIGSTOP)
        try:
            self.expect_old()
        finally:
            os.kill(self.board.serve.pid, signal.SIGCONT)
        self.expect_live()

    def test_says_that_the_server_of_the_busses_is_gone(self):
        processes.stop(self.board.server)
        self.status_becomes("cause")
        told = self.board.causes()[0]
        self.assertEqual(self.read()["causes"][0]["words"], told["words"])
        self.assertEqual(page.link(self.browser), "live")
        self.board.start_server()
        self.expect_live()

    def test_goes_on_when_the_process_with_the_plug_in_is_gone(self):
        before = self.board.child()
        for child in before:
            os.kill(child, signal.SIGKILL)
        within(30, lambda: self.board.child() not in ([], before), "there is another child")
        self.expect_live()

    def test_a_page_that_is_opened_before_serve_comes_by_itself(self):
        processes.stop(self.board.serve)
        page.wait_for_link(self.browser, "lost")
        self.browser.execute_script("window.isTheSamePage = true")
        self.board.start_serve()
        self.expect_live()
        self.assertTrue(self.browser.execute_script("return window.isTheSamePage"), "it was loaded anew")


if __name__ == "__main__":
    unittest.main()
