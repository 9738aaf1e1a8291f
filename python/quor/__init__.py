"""Technical-indicator scripts over DataFrames.

``compile`` a script, ``Script.run`` it over the bars of one security, follow bars as they come with
``Script.live``, try parameters with ``sweep``, and look at whole markets with ``scan``.
"""

from .errors import BarsWarning, Finding, ParameterError, ScanWarning, ScriptError
from .frames import read_csv
from .scanning import scan
from .script import Line, Live, Script, compile
from .sweeping import sweep

__all__ = [
    "BarsWarning", "Finding", "Line", "Live", "ParameterError", "ScanWarning", "Script",
    "ScriptError", "compile", "read_csv", "scan", "sweep",
]
