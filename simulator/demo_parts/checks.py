"""The checks at the end of the demo. Each answers what is wrong, a line a fault; nothing when all is well."""

from __future__ import annotations

from dataclasses import dataclass

from . import daily
from .filed import compare, expectation_of, filed_files
from .station import DISCARD_SIZE, EXPIRED_DAYS, FRESH_DAYS, Feed
from .status import StatusTerminal


@dataclass(frozen=True)
class RunTimes:
    started: daily.Moment
    ready: daily.Moment
    ended: daily.Moment


@dataclass
class Totals:
    sent: int = 0
    filed: int = 0
    missing: int = 0
    unexpected: int = 0
    discarded: int = 0  # pieces that the story tool throws away: line ends between the stories, and the shortest stories


def check_stories(feed: Feed, totals: Totals) -> list[str]:
    wanted = expectation_of(feed, feed.plan).filed(DISCARD_SIZE)
    found = compare(feed, wanted)
    totals.sent += len(wanted)
    totals.discarded += len(expectation_of(feed, feed.plan).stories) - len(wanted)
    totals.filed += len(filed_files(feed))
    totals.missing += len(found.missing)
    totals.unexpected += len(found.unexpected)
    faults = [f"feed {feed.number}: missing, {story.sha256[:12]} {story.first_words()}" for story in found.missing]
    return faults + [f"feed {feed.number}: unexpected, {file}" for file in found.unexpected]


def check_status(feed: Feed, terminal: StatusTerminal) -> list[str]:
    """The status port has a line for every story that was handed on, filed or discarded."""
    handed_on = len(expectation_of(feed, feed.sent).stories)
    if terminal.stories() == handed_on:
        return []
    return [f"feed {feed.number}: {terminal.stories()} status lines for {handed_on} stories handed on"]


def check_bounce(feed: Feed, received: bytes) -> list[str]:
    sent = feed.sent.read_bytes()
    if received == sent:
        return []
    same = next((at for at, pair in enumerate(zip(received, sent)) if pair[0] != pair[1]), min(len(received), len(sent)))
    return [f"feed {feed.number}: the bounce port gave {len(received)} bytes of {len(sent)}, the first {same} of them right"]


def check_daily_tools(feed: Feed, times: RunTimes) -> list[str]:
    faults = []
    for tool in daily.WINDOWS:
        runs = daily.runs_in_log(feed.stories, tool)
        allowed = daily.bounds(tool, times.started, times.ready, times.ended)
        if not allowed.least <= len(runs) <= allowed.most:
            wanted = f"{allowed.least} to {allowed.most}" if allowed.least < allowed.most else str(allowed.most)
            faults.append(f"feed {feed.number}: {tool} ran {len(runs)} times, the clock wants {wanted}")
        faults += [
            f"feed {feed.number}: {tool} ran at {moment:%H:%M:%S}, outside its part of the hour"
            for moment in runs
            if not daily.allowed_at(tool, moment)
        ]
    return faults + _check_what_they_left(feed)


def _check_what_they_left(feed: Feed) -> list[str]:
    expired = bool(daily.runs_in_log(feed.stories, daily.DROP))
    indexed = bool(daily.runs_in_log(feed.stories, daily.ROLL))
    faults = []
    if feed.dated_folder(EXPIRED_DAYS).exists() == expired:
        faults.append(f"feed {feed.number}: the stories of {EXPIRED_DAYS} days ago are {'still there' if expired else 'gone'}")
    if not feed.dated_folder(FRESH_DAYS).exists():
        faults.append(f"feed {feed.number}: the stories of {FRESH_DAYS} days ago are gone")
    if (feed.stories / "INDEX.txt").exists() != indexed:
        faults.append(f"feed {feed.number}: INDEX.txt is {'missing' if indexed else 'there without ItemRoll'}")
    return faults


def daily_tools_due(feed: Feed, times: RunTimes) -> bool:
    """Whether every daily tool that is certain to have started has left its line."""
    return all(
        len(daily.runs_in_log(feed.stories, tool)) >= daily.bounds(tool, times.started, times.ready, times.ended).least
        for tool in daily.WINDOWS
    )
