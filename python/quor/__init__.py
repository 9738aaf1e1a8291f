"""Technical-indicator scripts over DataFrames.

``compile`` a script, ``Script.run`` it over the bars of one security, follow bars as they come with
``Script.live``, try parameters with ``sweep``, and look at whole markets with ``scan``.
"""

from .errors import Finding, ScanWarning, ScriptError
from .scanning import scan
from .script import Line, Live, Script, compile
from .sweeping import sweep

__all__ = [
    "Finding", "Line", "Live", "ScanWarning", "Script", "ScriptError", "compile", "scan", "sweep",
]
