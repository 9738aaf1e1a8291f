"""Technical-indicator scripts over DataFrames.

``compile`` a script, ``Script.run`` it over the bars of one security, follow bars as they come with
``Script.live``, try parameters with ``sweep``, and look at whole markets with ``scan``.
"""

from .installation import version
from .context import Sessions
from .errors import BarsWarning, Finding, ParameterError, ScanWarning, ScriptError
from .frames import read_csv
from .live import Live
from .notebook import Chart
from .ordering import orders
from .references import Reference
from .scanning import scan
from .script import Line, Script, compile
from .sweeping import sweep

__all__ = [
    "BarsWarning", "Chart", "Finding", "Line", "Live", "ParameterError", "Reference", "ScanWarning",
    "Script", "ScriptError", "Sessions", "compile", "orders", "read_csv", "scan", "sweep",
]

__version__ = version
