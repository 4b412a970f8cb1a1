#!/usr/bin/env bash
# Fails on an include of the system's folders that runs up or sideways.
# Each layer may include itself and the layers listed for it, nothing else.
set -euo pipefail
cd "$(dirname "$0")/.."

declare -A allowed=(
  [core]="core"
  [fitting]="core fitting"
  [plot]="core fitting plot"
  [evolution]="core fitting plot evolution"
  [analysis]="core fitting plot analysis"
  [particles]="core fitting plot particles"
  [app]="core fitting plot evolution analysis particles app"
  [web]="core fitting plot evolution analysis particles app web"
  [python]="core fitting plot evolution analysis particles app python"
)
layers="core fitting plot evolution analysis particles app web python tests"

bad=0
for layer in "${!allowed[@]}"; do
  [ -d "$layer" ] || continue
  while IFS= read -r hit; do
    file=${hit%%:*}
    target=$(sed -E 's/.*#include "([^/"]+)\/.*/\1/' <<<"$hit")
    case " $layers " in *" $target "*) ;; *) continue ;; esac
    case " ${allowed[$layer]} " in
      *" $target "*) ;;
      *) echo "layers: $file includes $target/, which $layer/ may not use" >&2; bad=1 ;;
    esac
  done < <(grep -rnE '^#include "[^"/]+/' "$layer" --include='*.cpp' --include='*.hpp' || true)
done
if [ "$bad" -ne 0 ]; then exit 1; fi
echo "layers: every include runs downward"
