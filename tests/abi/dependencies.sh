#!/bin/sh
# dependencies.sh READELF LIBRARY SONAME
#
# LIBRARY calls itself SONAME, needs nothing but the standard library of the language, and has the loader look for all
# operations of its platform at once. It stays where it is, once it is loaded.
set -eu

dynamic=$("$1" -d "$2")

echo "$dynamic" | grep -qF "Library soname: [$3]" || { echo "the soname is not $3"; exit 1; }

echo "$dynamic" | grep -qE '\(FLAGS_1\).* NOW' || { echo "operations of the platform are looked for when they are called"; exit 1; }

echo "$dynamic" | grep -qE '\(FLAGS_1\).* NODELETE' || { echo "it is unloaded, and its addresses are kept"; exit 1; }

# The loader, which is the standard library's, finds what each thread has of its own.
needed=$(echo "$dynamic" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
strangers=$(echo "$needed" | grep -vxE '(libstdc\+\+|libm|libgcc_s|libc)\.so\.[0-9]+|ld-linux[-a-z0-9_]*\.so\.[0-9]+' || true)
if [ -n "$strangers" ]; then
    echo "needs:"
    echo "$strangers"
    exit 1
fi
