"""A test with a board and a browser of its own, and a time limit."""

import os
import signal
import unittest

from selenium.common.exceptions import WebDriverException

import page
from board import Board
from browser import Browser


class Case(unittest.TestCase):
    seconds = 120  # for each test, and as many to start all

    @classmethod
    def setUpClass(cls):
        cls.limit(cls.seconds)
        cls.board = cls.make_board()
        cls.addClassCleanup(cls.board.stop)
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.stop)

    @classmethod
    def make_board(cls):
        return Board()

    @classmethod
    def limit(cls, seconds):
        def over(*_):
            raise AssertionError(f"it takes longer than {seconds} s")
        signal.signal(signal.SIGALRM, over)
        signal.alarm(seconds)

    def setUp(self):
        self.limit(self.seconds)
        self.addCleanup(self.keep_picture_of_failure)

    def keep_picture_of_failure(self):
        result = self._outcome.result
        if any(test is self for test, _ in result.failures + result.errors):
            self.picture(f"failed-{self._testMethodName}")

    def picture(self, name):
        """Where pictures are wanted, one of what is seen now."""
        folder = os.environ.get("ORBIS_PICTURES")
        if folder:
            try:
                self.browser.save_screenshot(os.path.join(folder, f"{name}.png"))
            except WebDriverException as failure:
                print(f"no picture {name}: {failure.msg}")

    def open(self, path="/"):
        page.open_page(self.browser, self.board.url, path)

    def read(self):
        return page.read(self.browser)
