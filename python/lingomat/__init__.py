"""Names the programming or markup language of source text, through the lingomat library.

    import lingomat
    with lingomat.Engine() as engine:
        engine.identify(b"#!/bin/sh\\necho hi\\n")          # 'Shell'
        engine.identify(text, filename="setup.py")

Scale-out with Dask: see lingomat.dask.
"""

from .engine import Engine
from .errors import LingomatError

__all__ = ["Engine", "LingomatError", "__version__"]
__version__ = "1.0.0"
