# Shows Doxygen the plain comments of the public headers as documentation:
#
# - the comment at the top describes the file, as it stands;
# - a comment above a class or a function describes it;
# - the comment above the accessors of a field, whose last line is the field's declaration in the
#   schema, heads a group of them, down to the next empty line.
#
# The inline functions behind the classes have nothing to say.

function emit_group(    i) {
  printf "%s/// @name %s\n", indent, substr(comment[count], 4)
  for (i = 1; i < count; ++i) print indent "///" substr(comment[i], 3)
  print indent "/// @{"
  in_group = 1
}

function emit_description(    i) {
  for (i = 1; i <= count; ++i) print indent "///" substr(comment[i], 3)
}

function flush_comment() {
  if (count == 0) return
  if (comment[count] ~ /^\/\/ (optional|required|repeated) .* = [0-9]+.*;$/) {
    emit_group()
  } else {
    emit_description()
  }
  count = 0
}

at_top == 0 && /^#ifndef/ {
  print "/** @file"
  print "@verbatim"
  for (i = 1; i <= count; ++i) print substr(comment[i], 4)
  print "@endverbatim"
  print "*/"
  count = 0
  at_top = 1
}

/^\/\/ .* -----/ { behind_classes = 1 }

behind_classes { print; next }

/^ *\/\/ clang-format/ { print; next }

/^ *\/\// {
  match($0, /^ */)
  indent = substr($0, 1, RLENGTH)
  comment[++count] = substr($0, RLENGTH + 1)
  next
}

{ flush_comment() }

/^$/ && in_group { print "  /// @}"; in_group = 0 }

{ print }
