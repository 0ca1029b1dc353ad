"""Twenty people look at once: every page is live, and all tell the same."""

import unittest

import page
from board import FOUR, Board, break_four
from case import Case
from processes import within

PAGES = 20


class ManyPagesTest(Case):
    seconds = 60

    @classmethod
    def make_board(cls):
        return Board(address="0.0.0.0")

    def each_page(self):
        for window in self.browser.window_handles:
            self.browser.switch_to.window(window)
            yield

    def streams(self):
        """How many pages serve tells what is new, each at an address of its own."""
        with open(f"/proc/{self.board.serve.pid}/net/tcp", encoding="ascii") as file:
            lines = [line.split() for line in file.read().splitlines()[1:]]
        port = f"{self.board.port:04X}"
        return {local for _, local, _, state, *_ in lines if local.endswith(f":{port}") and state == "01"}

    def test_twenty_pages_at_once_are_live_and_tell_the_same_causes(self):
        # A browser opens six connections to one host, and each page keeps one: so each has an address of its own.
        for number in range(1, PAGES + 1):
            if number > 1:
                self.browser.switch_to.new_window("window")  # a tab in the background listens to nothing
            self.browser.get(f"http://127.0.0.{number}:{self.board.port}/")
        for _ in self.each_page():
            page.wait_for_link(self.browser, "live")
            self.assertFalse(self.browser.execute_script("return document.hidden"))
        self.assertEqual(len(self.streams()), PAGES, "each page has its own connection")
        break_four(self.board)
        told = []
        for _ in self.each_page():
            within(10, lambda: len(self.read()["causes"]) == len(FOUR),
                   lambda: f"page {len(told) + 1} shows {len(FOUR)} causes: {self.read()['causes']}")
            told.append(self.read())
        self.assertEqual(len(told), PAGES)
        self.assertEqual({one["link"] for one in told}, {"live"})
        self.assertEqual({one["status"] for one in told}, {"4 causes"})
        for one in told:
            self.assertEqual({cause["cause"] for cause in one["causes"]}, set(FOUR.values()))
        # All still hear something: serve has dropped no page.
        ages = [one["age"] for one in told]
        for number, _ in enumerate(self.each_page()):
            within(10, lambda old=ages[number]: self.read()["age"] != old and page.link(self.browser) == "live",
                   lambda shown=number: f"page {shown + 1} goes on")
        self.assertEqual(len(self.board.causes()), len(FOUR))


if __name__ == "__main__":
    unittest.main()
