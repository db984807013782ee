# Object database benchmarks: saving, reading back and bulk retrieval of
# 10,000 objects through the object database, beside plain SQL on the same
# ODBC driver.
add_executable(fro_db_bench ${CMAKE_CURRENT_LIST_DIR}/fro_db_bench.cpp)
target_link_libraries(fro_db_bench PRIVATE ssc_fro ssc_fro_testsupport benchmark::benchmark)
