# vesk_unity(TARGET [BATCH n]): with VESK_UNITY_BUILD, TARGET compiles its sources in batches of n
# (8 unless given). Names at file scope with internal linkage (anonymous namespaces, static) must
# then be distinct across the target's sources.
function(vesk_unity target)
  cmake_parse_arguments(ARG "" "BATCH" "" ${ARGN})
  if(NOT ARG_BATCH)
    set(ARG_BATCH 8)
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${VESK_UNITY_BUILD}
                                             UNITY_BUILD_BATCH_SIZE ${ARG_BATCH})
endfunction()
