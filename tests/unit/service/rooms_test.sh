#!/usr/bin/env bash
# scripts/rooms finds an include that runs up, one to the side, and a source in no
# room, and nothing else.
# usage: rooms_test.sh SCRIPT
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

mkdir -p "$folder"/{bus,drivers/simulated,fleet,handlers,view,elsewhere}
echo '#include "handlers/handlers.h"' > "$folder/bus/server.cc"
echo '#include "fleet/agenda.h"' > "$folder/fleet/fleet.h"
echo '#include "bus/server.h"' > "$folder/fleet/fleet.cc"
echo '#include "view/page.h"' > "$folder/handlers/power.cc"
echo '#include "drivers/simulated/camera.h"' > "$folder/drivers/driver.h"
echo '#include "drivers/driver.h"' > "$folder/drivers/simulated/camera.cc"
touch "$folder/elsewhere/lost.cc"

found=$("$1" "$folder" || true)
diff - <(echo "$found") <<'EXPECTED'
drivers/driver.h:1: drivers includes drivers/simulated/camera.h, which is not below it
elsewhere/lost.cc: is in no room
fleet/fleet.cc:1: fleet includes bus/server.h, which is not below it
handlers/power.cc:1: handlers includes view/page.h, which is not below it
EXPECTED
! "$1" "$folder" > /dev/null
! "$1" "$folder/nowhere" 2> /dev/null
