# The tree suite has node classes of its own (test extenders), generated from
# TestNodes.def like the engine's.
mv_generate_nodes(${target} TABLE ${CMAKE_CURRENT_SOURCE_DIR}/tree/TestNodes.def NAME TestNodes DIR testtree)
target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/tree)
# The generator itself is tested on bad tables.
target_compile_definitions(${target} PRIVATE MV_NODEGEN_PATH="$<TARGET_FILE:mvnodegen>")
