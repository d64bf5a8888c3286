# PostgreSQL's own parser (libpg_query, Debian: libpg-query-dev) judges what
# the PostgreSQL dialect prints; without it that test skips with a message.
find_path(MV_PG_QUERY_INCLUDE_DIR pg_query.h)
find_library(MV_PG_QUERY_LIBRARY pg_query)
if(MV_PG_QUERY_INCLUDE_DIR AND MV_PG_QUERY_LIBRARY)
  target_include_directories(test_dialects SYSTEM PRIVATE ${MV_PG_QUERY_INCLUDE_DIR})
  target_link_libraries(test_dialects PRIVATE ${MV_PG_QUERY_LIBRARY})
  target_compile_definitions(test_dialects PRIVATE MV_HAVE_PG_QUERY=1)
endif()
