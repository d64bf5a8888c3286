// Ends an option table (see OptionMacros.h): the row macros and the pass go.
#undef MV_OPTION
#undef MV_OPTION_RANGE
#undef MV_OPTION_CORRECTED
#undef MV_OPTION_OBJECT
#undef MV_OPTION_PROXY
#undef MV_OPTION_BOUND
#undef MV_OPTIONS_MEMBERS
#undef MV_OPTIONS_TABLE
#undef MV_OPTIONS_FORWARD
