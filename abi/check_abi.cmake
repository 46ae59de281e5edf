# The ABI guard: the dynamic symbols that the built library defines, demangled and sorted, must be
# exactly those of abi/libquarn-qel-client.symbols. Prints what is extra and what is missing.
#
#   cmake -DLIB=<library> -DSYMBOLS=<list> [-DNM=<nm>] [-DUPDATE=ON] -P check_abi.cmake
#
# With UPDATE=ON the list is rewritten from the library instead (after a deliberate API change).
if(NOT NM)
    set(NM nm)
endif()
execute_process(COMMAND ${NM} -D --defined-only -C ${LIB} OUTPUT_VARIABLE output
                RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${LIB}")
endif()
string(REPLACE ";" "\\;" output "${output}")
string(REPLACE "\n" ";" lines "${output}")
set(exported)
foreach(line IN LISTS lines)
    # "<address> <type> <demangled name>"; the name may hold blanks.
    if(line MATCHES "^[0-9a-fA-F]+ [A-Za-z] (.+)$")
        list(APPEND exported "${CMAKE_MATCH_1}")
    endif()
endforeach()
list(SORT exported)
list(REMOVE_DUPLICATES exported)

if(UPDATE)
    string(REPLACE ";" "\n" text "${exported}")
    file(WRITE ${SYMBOLS} "${text}\n")
    message(STATUS "wrote ${SYMBOLS}")
    return()
endif()

file(STRINGS ${SYMBOLS} expected)
list(FILTER expected EXCLUDE REGEX "^#|^$")
list(SORT expected)
set(extra ${exported})
list(REMOVE_ITEM extra ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${exported})
foreach(symbol IN LISTS extra)
    message("extra export: ${symbol}")
endforeach()
foreach(symbol IN LISTS missing)
    message("missing export: ${symbol}")
endforeach()
if(extra OR missing)
    list(LENGTH extra extraCount)
    list(LENGTH missing missingCount)
    message(FATAL_ERROR "${LIB}: ${extraCount} exports not in ${SYMBOLS}, ${missingCount} listed "
                        "but not exported")
endif()
list(LENGTH exported count)
message(STATUS "the ${count} exports of ${LIB} are those of ${SYMBOLS}")
