"""A server that grows is noticed; what it takes while it settles does not count."""

import time
import unittest

from demo_parts.usage import MEGABYTE, Sample, Usage, settled_after


def usage_of(length: float, *samples: tuple[float, float, int]) -> Usage:
    """The samples of a run: seconds, megabytes, descriptors; a processor that is half busy."""
    began = time.monotonic()
    left = iter([(0.0, 10.0, 20), *samples])

    def sample(_: float) -> Sample:
        seconds, megabytes, descriptors = next(left)
        return Sample(seconds, int(megabytes * MEGABYTE), descriptors, seconds / 2)

    usage = Usage(sample, length)
    for _ in samples:
        usage.look(began)
    return usage


class UsageTest(unittest.TestCase):
    def test_settles_for_five_minutes_or_the_tenth_of_a_shorter_run(self) -> None:
        self.assertEqual(settled_after(3600), 300)
        self.assertEqual(settled_after(180), 18)

    def test_growth_while_it_settles_does_not_count(self) -> None:
        usage = usage_of(3600, (299, 30, 20), (300, 31, 20), (3600, 31.9, 20))
        self.assertEqual(usage.faults(), [])

    def test_megabyte_is_too_much(self) -> None:
        usage = usage_of(3600, (300, 31, 20), (3600, 32, 20))
        self.assertEqual(usage.faults(), ["the server's memory has grown by 1.00 MB since minute 5.0"])

    def test_memory_that_was_given_back_has_not_grown(self) -> None:
        usage = usage_of(3600, (300, 31, 20), (1800, 40, 20), (3600, 31, 20))
        self.assertEqual(usage.faults(), [])
        self.assertEqual(usage.highest().resident, 40 * MEGABYTE)

    def test_descriptor_that_was_not_closed(self) -> None:
        usage = usage_of(3600, (200, 31, 24), (300, 31, 20), (3600, 31, 24))
        self.assertEqual(usage.faults(), [])
        usage = usage_of(3600, (200, 31, 24), (300, 31, 20), (3600, 31, 25))
        self.assertEqual(len(usage.faults()), 1)

    def test_run_that_was_cut_short_has_not_grown(self) -> None:
        self.assertEqual(usage_of(3600, (60, 90, 20)).faults(), [])

    def test_share_of_the_processor(self) -> None:
        self.assertEqual(usage_of(600, (60, 31, 20), (120, 31, 20)).share_since(60), 50)


if __name__ == "__main__":
    unittest.main()
