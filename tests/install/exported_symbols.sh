#!/usr/bin/env bash
# Fails if a shared library exports anything beyond its own namespaces: ICU and Expat symbols,
# or strong definitions outside NAMESPACE... Weak definitions of std:: and boost:: templates are
# allowed: every object that instantiates them emits them, and they are not our interface.
set -euo pipefail

if [ $# -lt 2 ]; then
  echo "usage: $0 LIBRARY NAMESPACE..." >&2
  exit 2
fi
lib=$1
shift
ns_alt=$(IFS='|'; echo "$*")

[ -f "$lib" ] || { echo "exported_symbols: no such library: $lib" >&2; exit 1; }

# One line per defined dynamic symbol: TYPE, RAW NAME, DEMANGLED NAME and the demangled name with
# every template argument list removed (innermost first), so that a return type or a template
# argument cannot make a name look as if it belonged to a namespace.
symbols=$(nm -D --defined-only "$lib" | awk 'NF == 3 { print $2, $3 }')
[ -n "$symbols" ] || { echo "exported_symbols: $lib exports nothing" >&2; exit 1; }
table=$(paste <(printf '%s\n' "$symbols" | tr ' ' '\t') \
              <(printf '%s\n' "$symbols" | awk '{ print $2 }' | c++filt) |
        awk -F '\t' -v OFS='\t' '{ s = $3; while (gsub(/<[^<>]*>/, "", s)) {} print $1, $2, $3, s }')

ours="^([^ (]+ )?($ns_alt)::"
ours_inside="(^|<)($ns_alt)::"
# A return type of one or more words ("unsigned short*") may stand before the name, and so may
# a decltype ("decltype(auto)", "decltype (__miter_base(...))").
library_template="^((decltype ?\\(.*\\)|[^ (]+) )*(std|__gnu_cxx|boost)::"
# ICU renames its C symbols with a version suffix (ucnv_open_72) and its classes into icu_72::.
foreign_raw="^XML_|^Xml[A-Z]|^[A-Za-z][A-Za-z0-9_]*_[0-9]+$"
foreign_demangled="icu(_[0-9]+)?::"
# libstdc++ compiles the char16_t members of these three facets for no character type but char
# and wchar_t; libqxi18n defines them as its own interface for char16_t streams.
std_char16_facets="^([^ (]+ )*std::(ctype|ctype_byname|__cxx11::numpunct)<char16_t>::"
special="^(typeinfo for |typeinfo name for |vtable for |VTT for |construction vtable for |guard variable for |(non-)?virtual thunk to )"
bad=0
own=0
while IFS=$'\t' read -r type raw demangled plain; do
  if [[ $raw =~ $foreign_raw || $demangled =~ $foreign_demangled ]]; then
    echo "exported_symbols: ICU or Expat symbol exported: $type $demangled" >&2
    bad=1
    continue
  fi
  if [[ $plain =~ $ours || ( $type == T && $demangled =~ $std_char16_facets ) ]]; then
    own=$((own + 1))
    continue
  fi
  # Type information and tables of our classes, or of library templates over our classes
  # (the clone wrapper around each exception type).
  if [[ $demangled =~ $special ]]; then
    rest=${demangled#"${BASH_REMATCH[0]}"}
    if [[ $rest =~ $ours_inside ]]; then
      continue
    fi
  fi
  case $type in
    W|V|u|w|v)
      rest=$plain
      if [[ $plain =~ $special ]]; then rest=${plain#"${BASH_REMATCH[0]}"}; fi
      if [[ $rest =~ $library_template ]]; then continue; fi
      ;;
  esac
  echo "exported_symbols: outside the interface: $type $demangled" >&2
  bad=1
done <<<"$table"

[ "$own" -gt 0 ] || { echo "exported_symbols: nothing in namespaces $* is exported" >&2; bad=1; }
[ "$bad" -eq 0 ] || exit 1
echo "exported_symbols: $lib exports $own symbols of $* and nothing else of its own"
