# Plain setuptools with no pyproject.toml: pip then builds in the running environment,
# so `pip install ./python` needs no network to fetch build tools.
from setuptools import setup

setup()
