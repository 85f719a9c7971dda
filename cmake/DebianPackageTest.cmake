# Builds the Debian packages of a build folder with cpack, checks what they depend on, unpacks
# them into a scratch root with dpkg -x, builds examples/consumer against that root, and runs
# the unpacked zenutl tool on the trail the consumer recorded.
include(${CMAKE_CURRENT_LIST_DIR}/ConsumerProject.cmake)
file(REMOVE_RECURSE ${WORK_DIR})
set(root ${WORK_DIR}/root)

run(${CPACK} -G DEB --config ${BUILD_DIR}/CPackConfig.cmake -B ${WORK_DIR}/packages)

# Each package, and what its Depends field must name.
set(libzenutl0_needs libboost-thread1.74.0 libboost-filesystem1.74.0 libboost-date-time1.74.0
    libxerces-c3.2 libuuid1)
set(libzenutl-dev_needs "libzenutl0 (= ${VERSION})" libboost1.74-dev libboost-thread1.74-dev
    libxerces-c-dev)
set(zenutl-tools_needs "libzenutl0 (= ${VERSION})")
foreach(package libzenutl0 libzenutl-dev zenutl-tools)
  file(GLOB deb ${WORK_DIR}/packages/${package}_${VERSION}_*.deb)
  if(NOT deb)
    message(FATAL_ERROR "cpack made no package ${package}")
  endif()
  run(dpkg-deb -f ${deb} Depends)
  foreach(needed IN LISTS ${package}_needs)
    string(FIND "${run_output}" "${needed}" found)
    if(found EQUAL -1)
      message(FATAL_ERROR "${package} does not depend on ${needed}: ${run_output}")
    endif()
  endforeach()
  run(dpkg -x ${deb} ${root})
endforeach()

foreach(file bin/zenutl share/zenutl/audit_trail.xsl include/zenutl/zenutl.h lib/libzenutl.so
             lib/pkgconfig/zenutl.pc lib/cmake/zenutl/zenutlConfig.cmake)
  if(NOT EXISTS ${root}/usr/${file})
    message(FATAL_ERROR "no package holds /usr/${file}")
  endif()
endforeach()

build_and_run_consumer(${SOURCE_DIR} ${root}/usr ${WORK_DIR} "${SANITIZE}" ${WORK_DIR}/trail.xml)
run(${root}/usr/bin/zenutl audit verify ${WORK_DIR}/trail.xml)
if(NOT run_output MATCHES "verified: every session matches its checksum \\(1 session\\)")
  message(FATAL_ERROR "the packaged tool did not verify the consumer's trail: ${run_output}")
endif()
message(STATUS "the packages install, build the consumer and verify its trail")
