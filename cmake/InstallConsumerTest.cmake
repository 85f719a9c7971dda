# Installs the library into a scratch prefix, then configures, builds and runs
# examples/consumer against it with find_package(zenutl) and with pkg-config.
include(${CMAKE_CURRENT_LIST_DIR}/ConsumerProject.cmake)
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
build_and_run_consumer(${SOURCE_DIR} ${prefix} ${WORK_DIR} "${SANITIZE}" "")
message(STATUS "installed package builds and runs")
