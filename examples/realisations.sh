#!/bin/sh
# Coarsens a number of realisations of the example field with the batch runner, one after the other, and gathers their
# figures in one table.
#
#     examples/realisations.sh [NUMBER] [FOLDER]      5 realisations into out/realisations when left out
#
# The program is build/bin/lodex unless LODEX names another one. A realisation that fails is named on standard error, the
# others go on; the exit status is 1 then. A realisation whose report is there is not done again.
set -u

number=${1:-5}
folder=${2:-out/realisations}
lodex=${LODEX:-$(dirname "$0")/../build/bin/lodex}

case $number in
'' | *[!0-9]*)
    echo "usage: $0 [NUMBER] [FOLDER]" >&2
    exit 2
    ;;
esac
if ! [ -x "$lodex" ]; then
    echo "$0: $lodex is missing; build it with ./run or name it in LODEX" >&2
    exit 2
fi
mkdir -p "$folder" || exit 2

# Mean of a property in a report.
mean_of() {
    awk -v wanted="\"$1\": {" 'index($0, wanted) { inside = 1 }
        inside && /"mean":/ { gsub(/[^-+.0-9eE]/, "", $2); print $2; exit }' "$2"
}
# A number at the top of a report.
number_of() {
    awk -v wanted="\"$1\":" '$1 == wanted { gsub(/[^-+.0-9eE]/, "", $2); print $2; exit }' "$2"
}

failed=0
seed=1
while [ "$seed" -le "$number" ]; do
    report=$folder/coarse_$seed.json
    if ! [ -s "$report" ]; then
        "$lodex" --quiet -c "
            lodex create example name Field size 30+24+20 seed $seed
            lodex report sgrid Field file \"$folder/fine_$seed.json\"
            lodex sgrid_merge_multiple_sections name Coarse sgrid Field direction \"vertical\" sections 0+1+2+3+4+5+6+7+8+9+10+11+12+13+14+15+16+17+18+19 copy_properties 1 property_sections -1 copy_regions 1 region_mode 2 percentile 50
            lodex export sgrid Coarse file \"$folder/coarse_$seed.grdecl\"
            lodex report sgrid Coarse file \"$report\"" || {
            echo "$0: realisation $seed failed" >&2
            failed=1
        }
    fi
    seed=$((seed + 1))
done

table=$folder/summary.csv
{
    echo "seed,fine_cells,coarse_cells,fine_volume,coarse_volume,fine_mean_porosity,coarse_mean_porosity"
    seed=1
    while [ "$seed" -le "$number" ]; do
        fine=$folder/fine_$seed.json
        coarse=$folder/coarse_$seed.json
        if [ -s "$fine" ] && [ -s "$coarse" ]; then
            echo "$seed,$(number_of active "$fine"),$(number_of active "$coarse"),$(number_of bulk_volume "$fine"),$(number_of bulk_volume "$coarse"),$(mean_of PORO "$fine"),$(mean_of PORO "$coarse")"
        fi
        seed=$((seed + 1))
    done
} >"$table"
cat "$table"
exit $failed
