/* Counts live GObjects by replacing g_object_new(), linked into a program or preloaded into one.
   If $ORU_TEST_LIVE_OBJECTS is set, the counts are written to the file of that name when the
   process ends: a line "TYPE COUNT" for each type that has live objects. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the number of live objects of the named type, or of all types if it is NULL. */
unsigned live_objects(const char* type_name);

/* Releases one reference of every live object. */
void release_live_objects(void);

#ifdef __cplusplus
}
#endif
