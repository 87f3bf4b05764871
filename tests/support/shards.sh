#!/bin/bash
# shards.sh COUNT COMMAND...: a Google Test program in COUNT processes at the same time, each with its share of the tests.
# The exit status is 0 when all are good, 77 (ctest: skipped) when all others are, else 1.
export GTEST_TOTAL_SHARDS=$1
shift
shards=()
for ((index = 0; index < GTEST_TOTAL_SHARDS; index++)); do
    GTEST_SHARD_INDEX=$index "$@" &
    shards+=($!)
done
result=0
for shard in "${shards[@]}"; do
    status=0
    wait "$shard" || status=$?
    case $status in
        0) ;;
        77) [ $result != 0 ] || result=77 ;;
        *) result=1 ;;
    esac
done
exit $result
