# tavlo_add_test(NAME name SOURCES ... LIBS ... [DISPLAY] [TIMEOUT s] [LABELS ...])
# Registers a Qt Test executable with CTest. Tests run offscreen unless DISPLAY is given,
# in which case they run inside scripts/xvfb-session (Xvfb, openbox and tint2).
function(tavlo_add_test)
  cmake_parse_arguments(T "DISPLAY" "NAME;TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE Qt6::Test ${T_LIBS})
  target_include_directories(${T_NAME} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support)
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 300)
  endif()
  if(T_DISPLAY)
    add_test(NAME ${T_NAME}
             COMMAND ${PROJECT_SOURCE_DIR}/scripts/xvfb-session $<TARGET_FILE:${T_NAME}>)
  else()
    add_test(NAME ${T_NAME} COMMAND ${T_NAME})
    set_property(TEST ${T_NAME} APPEND PROPERTY ENVIRONMENT QT_QPA_PLATFORM=offscreen)
  endif()
  set_property(TEST ${T_NAME} APPEND PROPERTY ENVIRONMENT
               "TAVLO_BINARY_DIR=${PROJECT_BINARY_DIR}" "TAVLO_SOURCE_DIR=${PROJECT_SOURCE_DIR}"
               "ASAN_OPTIONS=detect_leaks=0")
  set_tests_properties(${T_NAME} PROPERTIES TIMEOUT ${T_TIMEOUT} LABELS "${T_LABELS}")
endfunction()
