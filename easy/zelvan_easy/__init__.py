"""What stands around zelvan: reading its reports, converting them, and running many searches."""

# The one place that holds it: CMakeLists.txt, pyproject.toml and the packages take it from here.
VERSION = "1.0.0"
