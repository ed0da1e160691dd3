#!/bin/sh
# Prints the share of physical memory in use, in whole percent, or nothing when
# it can't be worked out. In use is what is neither free nor inactive.
#
# The line of top looks like this, with or without the Buf item:
#   Mem: 456M Active, 2918M Inact, 1127M Wired, 187M Cache, 829M Buf, 3535M Free

exec </dev/null

mem_line() {
    top -d 1 | grep '^Mem:'
}

# bytes AMOUNT: an amount that carries a unit, in bytes; nothing for another
bytes() {
    case $1 in
    *G*) printf '%s\n' "$1*1024*1024*1024" | sed 's/G//g' | bc ;;
    *M*) printf '%s\n' "$1*1024*1024" | sed 's/M//g' | bc ;;
    *K*) printf '%s\n' "$1*1024" | sed 's/K//g' | bc ;;
    esac
}

total=$(sysctl hw.physmem | awk '{print $2}')
inactive=$(mem_line | awk '{print $4}')
words=$(mem_line | wc -w)

free=
if [ "$words" -eq 11 ]; then
    free=$(mem_line | awk '{print $10}')
elif [ "$words" -eq 13 ]; then
    free=$(mem_line | awk '{print $12}')
fi

# A line of another length leaves the free amount unset. The two minus signs then
# meet in the expression, which bc refuses, and nothing is printed: a wrong
# percentage would be worse.
free_data=$(bytes "$free")
case $inactive in
*[GMK]*) inactive=$(bytes "$inactive") ;;
esac

printf '%s\n' "($total-$free_data-$inactive)*100/$total" | bc
