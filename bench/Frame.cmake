# Signal dispatch of the core: dispatch() alone and the whole receive loop
# through a server's phantom, beside the kernel's floor.
add_executable(frame_bench ${CMAKE_CURRENT_LIST_DIR}/frame_bench.cpp)
target_link_libraries(frame_bench PRIVATE ssc_platform_os benchmark::benchmark)
