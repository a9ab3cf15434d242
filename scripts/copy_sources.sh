# Sourced by lib.sh and by tests, not run.

# copy_sources FROM TO: this project's sources as they are, without what is built and without git's
# notes, into the folder TO, which is made if need be.
copy_sources() {
  mkdir -p "$2"
  tar -C "$1" --exclude ./build --exclude './build-*' --exclude ./.git -c . | tar -C "$2" -x
}
