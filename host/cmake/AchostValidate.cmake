# achost_validate_addon(<target> [STRICTNESS <1..10>] [SEED <n>] [TIMEOUT <seconds>] [CHECKS <name>...])
#
# Turns an add-on target into CTest tests: one test per check of `achost validate`, named
# validate.<target>.<check>, at STRICTNESS (default 5) with a fixed SEED (default 1) so that every run
# makes the same choices, each check's process killed after TIMEOUT seconds (default 60). CHECKS
# picks some checks (default all); achost refuses a name it does not know, so a stale list fails.
function(achost_validate_addon target)
    cmake_parse_arguments(ARG "" "STRICTNESS;SEED;TIMEOUT" "CHECKS" ${ARGN})
    set(strictness 5)
    set(seed 1)
    set(timeout 60)
    set(checks exports protocol lifecycle menus dialogs sessions settings)
    foreach(option strictness seed timeout checks)
        string(TOUPPER ${option} upper)
        if(DEFINED ARG_${upper})
            set(${option} ${ARG_${upper}})
        endif()
    endforeach()
    foreach(check ${checks})
        add_test(NAME validate.${target}.${check}
                 COMMAND achost validate --check ${check} --strictness ${strictness} --seed ${seed}
                         --timeout ${timeout} $<TARGET_FILE:${target}>)
    endforeach()
endfunction()
