#!/bin/sh
# imports.sh NM READELF LIBRARY
#
# The recorder takes no memory and no lock, and needs nothing but the standard library.
set -eu
undefined=$("$1" -D --undefined-only "$3" | awk '{ print $NF }' | sed 's/@.*//')
[ -n "$undefined" ] || { echo "nothing is undefined, which cannot be"; exit 1; }
found=$(echo "$undefined" | grep -E '^(malloc|calloc|realloc|free|aligned_alloc|posix_memalign|_Zn[wa].*|_Zd[la].*|pthread_mutex_.*|pthread_cond_.*|sem_.*)$' |
    grep -vE '^_ZdlPv[jm]?$' || true) # the destructors that can be called through tables, and never are
[ -z "$found" ] || { echo "takes memory or waits: $found"; exit 1; }
others=$("$2" -d "$3" | sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p' |
    grep -vE '^(libstdc\+\+\.so\.6|libgcc_s\.so\.1|libc\.so\.6|libm\.so\.6|libdl\.so\.2|libpthread\.so\.0|ld-linux.*)$' || true)
[ -z "$others" ] || { echo "needs $others"; exit 1; }
