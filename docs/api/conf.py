"""Sphinx settings of the Python reference, which tools/check-python-docs builds."""

import quarvis

project = "quarvis"
author = "the developers of quarvis-rules"
release = quarvis.__version__
extensions = ["sphinx.ext.autodoc", "sphinx.ext.autosummary", "numpydoc"]
autodoc_typehints = "signature"
autodoc_member_order = "bysource"
numpydoc_show_class_members = False
numpydoc_validation_checks = {"GL08", "PR02"}
numpydoc_validation_exclude = {r"^quarvis\.(measures|plots)\.", r"\.__", r"\.Budget\."}
html_theme = "basic"
html_copy_source = False
