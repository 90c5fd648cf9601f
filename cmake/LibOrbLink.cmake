# liborblink.so.0, made of the subsystem folders; each folder names its own sources.

set(orblink_map ${CMAKE_SOURCE_DIR}/cmake/liborblink.map)
add_library(orblink SHARED)
orblink_plain_library(orblink ${orblink_map})
target_link_libraries(orblink PUBLIC obplatform)
# What begins as zeroes is a segment of its own: behind what does not, the loader would clear the
# rest of a page, which then is each process's own.
target_link_options(orblink PRIVATE $<$<CONFIG:Release>:LINKER:--section-start=.bss=0x40000>)
set_target_properties(orblink PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0)

foreach(folder common hwmbox board switch switch_hal_services phy)
    add_subdirectory(${folder})
endforeach()

set(orblink_public_headers
    common/export.h common/format.h common/iface.h common/shared_names.h hwmbox/hwmbox.h board/board_services.h
    switch/orblink_api.h switch/orblink_bridging.h switch/orblink_features.h
    switch/orblink_hal.h switch/orblink_ports.h switch/orblink_records.h
    switch_hal_services/orblink_hal_services.h
    phy/ethphy_api.h phy/ethphy_hal.h phy/ethphy_records.h)

# What a HAL library is made with; its services are the library's.
add_library(orblink_hal_kit INTERFACE)
target_link_libraries(orblink_hal_kit INTERFACE orblink)
set_target_properties(orblink_hal_kit PROPERTIES EXPORT_NAME hal)

install(TARGETS orblink orblink_hal_kit EXPORT OrbLink)
foreach(header ${orblink_public_headers})
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orblink/${folder})
endforeach()
