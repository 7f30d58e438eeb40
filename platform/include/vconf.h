#ifndef VCONF_H
#define VCONF_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _keynode_t keynode_t;
typedef void (*vconf_callback_fn)(keynode_t *node, void *user_data);

int vconf_get_int(const char *key, int *value);      /* 0 on success */
char *vconf_get_str(const char *key);                /* heap copy (free()), NULL if absent */
int vconf_set_int(const char *key, int value);
int vconf_set_str(const char *key, const char *value);
int vconf_notify_key_changed(const char *key, vconf_callback_fn cb, void *user_data);
int vconf_ignore_key_changed(const char *key, vconf_callback_fn cb);
const char *vconf_keynode_get_name(keynode_t *node);

#ifdef __cplusplus
}
#endif

#endif /* VCONF_H */
