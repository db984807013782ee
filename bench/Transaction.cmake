# Management transactions through the transaction server, beside plain
# SQLite transactions of the same statements.
add_executable(transaction_bench ${CMAKE_CURRENT_LIST_DIR}/transaction_bench.cpp)
target_link_libraries(transaction_bench PRIVATE ssc_fro_trans ssc_fro_testsupport ssc_vanto benchmark::benchmark)
