"""Notices and trade signals of many securities."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Hashable, Iterable, NamedTuple

import numpy as np

from .arrays import Array
from .context import Calendar, Constants, Period
from .errors import raise_error
from .events import places_of
from .frames import FIELD_WORDS, Bars, Columns, Layout, need_of, plain
from .optional import is_frame, pd
from .panels import panel_of
from .protocols import adopted
from .references import Frames
from .sources import Source, bars_of, items_of, once_each, panel_items
from .times import index_of

if TYPE_CHECKING:
    from .panels import Panel
    from .script import Script

_NOTICE = "NOTICE"


class _Raised(NamedTuple):
    """The events of one security."""

    name: Hashable
    bars: Bars
    places: Array  #: of the bars, in their order by time
    order: Array  #: of the bars by time
    raw: Any


def orders(script: Script | str, frames: Source, *, by: Hashable = None, price: str = "close",
           later: int = 0, columns: Columns = None, duplicates: str = "error",
           period: Period | None = None, code: str | None = None, market: str | None = None,
           calendar: Calendar = None, constants: Constants = None,
           references: Frames = None) -> pd.DataFrame:
    """The trade signals of a script over the bars of securities, as a tidy frame.

    Parameters
    ----------
    script : Script or str
    frames, by, columns, duplicates
        As for :func:`scan`; the frame of one security alone serves, too, under ``code``.
    price : str
        The field whose value is the price: "close", "open" and so on.
    later : int
        How many bars behind its signal an order finds its price; with ``price="open", later=1`` the
        open of the next bar, which the script has not seen.
    period, code, market, calendar, constants, references
        As for :func:`compile`.

    Returns
    -------
    DataFrame
        By time and security: ``time`` of the bar, ``security``, ``word`` ("BK", "SP", ...),
        ``quantity`` (NaN if the script gives none) and ``price`` (NaN where there is no bar yet).
    """
    from .script import as_script

    if isinstance(later, bool) or not isinstance(later, int) or later < 0:
        raise ValueError(f"later must be a whole number from 0 on, and not {later!r}")
    script = as_script(script, period=period, code=code, market=market, calendar=calendar,
                       constants=constants, references=references)
    field = _field_of(price)
    layout = script.layout(columns, duplicates, (need_of(field),))
    frames = adopted(frames)
    is_alone = is_frame(frames) and by is None and panel_of(frames, by, layout) is None
    items = iter([(script.spec.context.code, frames)]) if is_alone else items_of(
        frames, by, layout)[0]
    parts = []
    for raised in _each(script, once_each(items), layout):
        words, names, quantities, _ = _columns(raised.raw)
        is_order = words != _NOTICE
        prices = np.append(dict(raised.bars.fields)[field][raised.order].astype(np.float64), np.nan)
        at = np.minimum(raised.places[is_order] + later, len(prices) - 1)
        parts.append(pd.DataFrame({
            "time": _times(raised)[raised.places[is_order]],
            "security": [raised.name] * int(is_order.sum()), "word": words[is_order],
            "quantity": quantities[is_order], "price": prices[at]}))
    if not parts:
        return pd.DataFrame({"time": pd.DatetimeIndex([]), "security": [], "word": [],
                             "quantity": np.empty(0), "price": np.empty(0)})
    return pd.concat(parts).sort_values(
        ["time", "security"], kind="stable", ignore_index=True,
        key=lambda values: values.astype(str) if values.name == "security" else values)


class PanelEvents(NamedTuple):
    """What the securities of a panel raise; calculated when asked for."""

    script: Script
    panel: Panel
    layout: Layout

    def frame(self) -> pd.DataFrame:
        """Time, security, word, name, quantity and statement of each, security by security."""
        parts = []
        for raised in _each(self.script, panel_items(self.panel), self.layout):
            words, names, quantities, statements = _columns(raised.raw)
            parts.append(pd.DataFrame({
                "time": _times(raised)[raised.places], "security": [raised.name] * len(words),
                "word": words, "name": names, "quantity": quantities, "statement": statements}))
        if not parts:
            return pd.DataFrame({"time": pd.DatetimeIndex([]), "security": [], "word": [],
                                 "name": [], "quantity": [], "statement": []})
        return pd.concat(parts, ignore_index=True)


def _field_of(price: Any) -> int:
    for id_, words in FIELD_WORDS.items():
        if plain(price) in words:
            return id_
    raise ValueError(f"price is the name of a field, such as 'close' or 'open', and not {price!r}")


def _each(script: Script, items: Iterable[tuple[Hashable, Any]],
          layout: Layout) -> Iterable[_Raised]:
    """Securities that raise events."""
    for name, source in items:
        bars = bars_of(source, layout)
        securities = (str(name).encode(errors="replace"), bars.times, bars.ticks, bars.fields)
        with script.engine() as engine:
            if not engine.run_as(*securities):
                raise_error(engine)
            layout.check_times(bars, engine.row_count())
            raw = engine.events()
            rows = engine.rows_of_bars()
        if raw is None:
            continue
        order = np.argsort(bars.times, kind="stable")
        rank = np.empty(len(order), np.int64)
        rank[order] = np.arange(len(order))
        yield _Raised(name, bars, rank[places_of(raw[0], rows)], order, raw)


def _times(raised: _Raised) -> pd.DatetimeIndex:
    return index_of((raised.bars.times // raised.bars.ticks)[raised.order])


def _columns(raw: Any) -> tuple[Array, Array, Array, Array]:
    _, _, quantities, statements, numbers, kinds = raw
    words = np.array([word for word, _ in kinds], object)[numbers]
    names = np.array([name for _, name in kinds], object)[numbers]
    return words, names, np.where(quantities == -1, np.nan, quantities), statements
