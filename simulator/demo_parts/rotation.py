"""Which carts a feed's recordings must take, and which of them are empty: the rule told a second time, knowing nothing of the server.

A recording takes the first empty cart behind the last one, up to the range's end, or else the first empty one from the range's
start up to the one before the last; when none is empty, the same search takes the first it meets. A begun recording clears so many
carts ahead; the range's last cart is never cleared by that, and what is cleared behind the turn hangs on the cart looked at last
before it: nothing where that was empty.
"""

from __future__ import annotations


class Rotation:
    def __init__(self, start: int, end: int, clear: int) -> None:
        self._start = start
        self._end = end
        self._clear = clear
        self.carts = range(start, end + 1)
        self.last = start - 1
        self.turns = 0
        self.held: set[int] = set()

    def next_cart(self) -> int:
        searched = (*range(self.last + 1, self._end + 1), *range(self._start, self.last))
        return next((cart for cart in searched if cart not in self.held), searched[0])

    def record(self) -> int:
        """A recording begins and ends; the answer is its cart."""
        cart = self.next_cart()
        self.held.add(cart)
        self._clear_from(cart + 1)
        self.turns += cart < self.last
        self.last = cart
        return cart

    def resume(self, last: int, held: set[int]) -> None:
        """Goes on from what was found, after a fault."""
        self.last = last
        self.held = held

    def _clear_from(self, first: int) -> None:
        ahead = range(first, min(first + self._clear, self._end))
        if len(ahead) == self._clear:
            self.held.difference_update(ahead)
            return
        spared = bool(ahead) and ahead[-1] not in self.held
        self.held.difference_update(ahead)
        if not spared:
            self.held.difference_update(range(self._start, min(first - 1, self._start + self._clear - len(ahead))))
