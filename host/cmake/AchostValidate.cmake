# achost_validate_addon(<target> [STRICTNESS <1..10>] [SEED <n>] [TIMEOUT <seconds>] [CHECKS <name>...])
#
# Turns an add-on target into CTest tests of `achost validate` at STRICTNESS (default 5) with a fixed
# SEED (default 1) so that every run makes the same choices, each check's process killed after
# TIMEOUT seconds (default 60). Without CHECKS, one test, validate.<target>, runs the whole catalogue
# as achost knows it, so a check added to achost is never left out; its output has one verdict line
# per check. With CHECKS, one test per check named, validate.<target>.<check>; achost refuses a name
# it does not know, so a stale list fails.
function(achost_validate_addon target)
    cmake_parse_arguments(ARG "" "STRICTNESS;SEED;TIMEOUT" "CHECKS" ${ARGN})
    set(strictness 5)
    set(seed 1)
    set(timeout 60)
    foreach(option strictness seed timeout)
        string(TOUPPER ${option} upper)
        if(DEFINED ARG_${upper})
            set(${option} ${ARG_${upper}})
        endif()
    endforeach()
    set(command achost validate --strictness ${strictness} --seed ${seed} --timeout ${timeout})
    if(NOT ARG_CHECKS)
        add_test(NAME validate.${target} COMMAND ${command} $<TARGET_FILE:${target}>)
    endif()
    foreach(check ${ARG_CHECKS})
        add_test(NAME validate.${target}.${check} COMMAND ${command} --check ${check} $<TARGET_FILE:${target}>)
    endforeach()
endfunction()
