"""What stands around zelvan: reading its reports, converting them, and running many searches."""

VERSION = "2.3.9"
