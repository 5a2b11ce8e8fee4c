"""Cases worked by hand: which daily tool the clock allows."""

import datetime
import unittest

from demo_parts.daily import DROP, ROLL, Bounds, allowed_at, bounds


def at(clock: str, day: int = 21) -> datetime.datetime:
    return datetime.datetime.fromisoformat(f"2026-11-{day} {clock}")


class BoundsTest(unittest.TestCase):
    def check(self, started: str, ended: str, drop: Bounds, roll: Bounds) -> None:
        for tool, expected in ((DROP, drop), (ROLL, roll)):
            self.assertEqual(bounds(tool, at(started), at(started), at(ended)), expected, tool)

    def test_first_half_of_the_hour_is_for_expiry(self) -> None:
        self.check("10:10:00", "10:10:20", Bounds(1, 1), Bounds(0, 0))

    def test_second_half_is_for_the_index(self) -> None:
        self.check("10:40:00", "10:40:20", Bounds(0, 0), Bounds(1, 1))

    def test_between_them_neither_runs(self) -> None:
        self.check("10:26:00", "10:26:20", Bounds(0, 0), Bounds(0, 0))

    def test_window_that_closes_in_the_first_seconds_may_be_missed(self) -> None:
        self.check("10:24:57", "10:25:17", Bounds(0, 1), Bounds(0, 0))

    def test_window_that_closes_late_in_the_run_was_seen(self) -> None:
        self.check("10:24:50", "10:25:10", Bounds(1, 1), Bounds(0, 0))

    def test_window_that_opens_in_the_last_seconds_may_be_missed(self) -> None:
        self.check("10:29:45", "10:30:05", Bounds(0, 0), Bounds(0, 1))

    def test_window_that_opens_early_in_the_run_is_seen(self) -> None:
        self.check("10:29:55", "10:30:15", Bounds(0, 0), Bounds(1, 1))

    def test_full_hour_shuts_the_index_and_opens_expiry(self) -> None:
        self.check("10:59:50", "11:00:10", Bounds(1, 1), Bounds(1, 1))

    def test_a_tool_runs_once_a_date_however_often_its_window_opens(self) -> None:
        self.check("10:10:00", "12:40:00", Bounds(1, 1), Bounds(1, 1))

    def test_midnight_makes_it_run_again(self) -> None:
        self.assertEqual(bounds(DROP, at("23:10:00"), at("23:10:00"), at("00:10:00", 22)), Bounds(2, 2))

    def test_only_time_after_the_feeds_are_up_is_certain(self) -> None:
        self.assertEqual(bounds(DROP, at("10:24:50"), at("10:24:58"), at("10:25:10")), Bounds(0, 1))


class AllowedAtTest(unittest.TestCase):
    def test_lines_of_a_tools_own_window(self) -> None:
        self.assertTrue(allowed_at(DROP, at("10:00:00")))
        self.assertTrue(allowed_at(DROP, at("10:25:03")))
        self.assertTrue(allowed_at(ROLL, at("10:30:01")))
        self.assertTrue(allowed_at(ROLL, at("11:00:03")))

    def test_lines_outside_it(self) -> None:
        self.assertFalse(allowed_at(DROP, at("10:26:00")))
        self.assertFalse(allowed_at(DROP, at("10:40:00")))
        self.assertFalse(allowed_at(ROLL, at("10:29:58")))
        self.assertFalse(allowed_at(ROLL, at("11:01:00")))


if __name__ == "__main__":
    unittest.main()
