/* Counts the GObjects that are alive, by standing in the place of g_object_new(): linked into a
   program, or preloaded into one. With $ORU_TEST_LIVE_OBJECTS set, the counts are written to the
   file of that name when the process ends, a line "TYPE COUNT" for each type that has any. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* How many objects of the named type are alive; of any type, when it is NULL. */
unsigned live_objects(const char* type_name);

/* Gives one reference of every object that is alive back. */
void release_live_objects(void);

#ifdef __cplusplus
}
#endif
