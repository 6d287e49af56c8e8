# The engine as a library: headers, archive, CMake package and pkg-config file.
install(TARGETS ordovan_core EXPORT OrdovanCoreTargets ARCHIVE COMPONENT engine)
# Headers that only the engine's own sources need, and neither its users nor another installed header, stay here.
set(own DuplicateBucket DuplicateComparison DuplicateOrder EntryRecord ReconcileItem RunProgress Verdict
        platform/CaseProbe platform/EmptyFolder platform/Failure platform/FileAttributes platform/FileCopy
        platform/FileHash platform/FileLock platform/MovedItem platform/SameFile platform/Sha256Streams
        platform/SystemPath platform/TemporaryFile platform/TrashNaming)
list(JOIN own | own)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/OrdovanCore DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT engine
        FILES_MATCHING PATTERN "*.h" PATTERN testing EXCLUDE REGEX "/(${own})\\.h$" EXCLUDE)
set(config ${CMAKE_INSTALL_LIBDIR}/cmake/OrdovanCore)
install(EXPORT OrdovanCoreTargets NAMESPACE OrdovanCore:: DESTINATION ${config} COMPONENT engine)
configure_package_config_file(engine/OrdovanCoreConfig.cmake.in ${made}/OrdovanCoreConfig.cmake
                              INSTALL_DESTINATION ${config})
# Nothing is promised between versions below 1.
write_basic_package_version_file(${made}/OrdovanCoreConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${made}/OrdovanCoreConfig.cmake ${made}/OrdovanCoreConfigVersion.cmake DESTINATION ${config}
        COMPONENT engine)
configure_file(engine/ordovancore.pc.in ${made}/ordovancore.pc @ONLY)
install(FILES ${made}/ordovancore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT engine)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/engine
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libordovancore-dev/examples COMPONENT engine)
ordovan_install_papers(engine libordovancore-dev)
