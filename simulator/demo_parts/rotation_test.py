"""Each sequence of carts was worked out by hand from the rule."""

import unittest

from demo_parts.rotation import Rotation


def recordings(rotation: Rotation, count: int) -> list[int]:
    return [rotation.record() for _ in range(count)]


class RotationTest(unittest.TestCase):
    def test_last_cart_of_the_range_is_taken_in_the_first_turn_alone(self) -> None:
        rotation = Rotation(1, 6, 2)
        self.assertEqual(recordings(rotation, 13), [1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 1, 2])
        self.assertEqual(rotation.turns, 2)

    def test_carts_ahead_are_cleared_and_no_others(self) -> None:
        rotation = Rotation(1, 6, 2)
        recordings(rotation, 8)
        # Recording into 2 has cleared 3 and 4.
        self.assertEqual(rotation.held, {1, 2, 5, 6})

    def test_cart_ahead_of_the_last_one_clears_behind_the_turn(self) -> None:
        rotation = Rotation(1, 6, 2)
        recordings(rotation, 4)
        self.assertEqual(rotation.held, {1, 2, 3, 4})
        # From 5 on no cart is looked at before the end: what was never read counts as held.
        recordings(rotation, 1)
        self.assertEqual(rotation.held, {3, 4, 5})

    def test_empty_cart_ahead_of_the_end_spares_those_behind_the_turn(self) -> None:
        rotation = Rotation(1, 6, 3)
        recordings(rotation, 3)
        rotation.record()  # into 4: looks at 5, which is empty
        self.assertEqual(rotation.held, {1, 2, 3, 4})

    def test_held_cart_ahead_of_the_end_clears_behind_the_turn(self) -> None:
        rotation = Rotation(1, 6, 3)
        rotation.resume(3, {1, 2, 3, 5})
        rotation.record()  # into 4: looks at 5, which is held, and clears 1 and 2 as well
        self.assertEqual(rotation.held, {3, 4})

    def test_without_clearing_the_oldest_cart_is_taken(self) -> None:
        rotation = Rotation(1, 3, 0)
        self.assertEqual(recordings(rotation, 7), [1, 2, 3, 1, 2, 3, 1])
        self.assertEqual(rotation.held, {1, 2, 3})

    def test_cleared_cart_below_the_recording_alone(self) -> None:
        rotation = Rotation(1, 4, 10)
        recordings(rotation, 3)
        # Into 3, the cart ahead of the last one: clears what lies below 3.
        self.assertEqual(rotation.held, {3})


if __name__ == "__main__":
    unittest.main()
