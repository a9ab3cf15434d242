# The part of the run-time's Python that the package and its programs use, for mypy where
# types-protobuf is not installed. Debian has no such package.
