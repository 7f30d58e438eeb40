#ifndef IRKT_IRBL_H
#define IRKT_IRBL_H

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

bool irkt_irbl_send_command_hdevice(int key, int device_index, bool online);
bool irkt_irbl_send_command_zdevice(int key, int device_index, bool online);
int irkt_irbl_set_aircon_states_and_send_command(int device_index, const char *mode,
                                                 const char *power,
                                                 const char *cooling_setpoint,
                                                 const char *fan_speed);
/* Heap text the caller releases with free(), or NULL. */
char *irkt_irbl_get_supported_keymap_hcodeset(const char *codeset, bool online);
char *irkt_irbl_get_supported_keymap_zcodeset(const char *codeset, bool online);

#ifdef __cplusplus
}
#endif

#endif /* IRKT_IRBL_H */
