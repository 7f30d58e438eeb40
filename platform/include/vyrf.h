#ifndef VYRF_H
#define VYRF_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void *vyrf_service_h;
typedef void *vyrf_transaction_h;
typedef void *vyrf_property_list_h;
typedef void *VYRF_PROPERTY_H;
typedef int vyrf_error;            /* 0 = success, anything else = failure */
typedef int VYRF_ERROR_E;          /* error value pushed together with a property */
typedef int vyrf_protocol_status;

typedef struct vyrf_string {
    const char *data;              /* not NUL-terminated; may be NULL when length is 0 */
    size_t length;
} vyrf_string;

/* Host property types used at registration */
enum {
    VYRF_PROPERTY_TYPE_BOOL = 0,
    VYRF_PROPERTY_TYPE_INT = 1,
    VYRF_PROPERTY_TYPE_STRING = 3,
    VYRF_PROPERTY_TYPE_JSON = 4,
    VYRF_PROPERTY_TYPE_DOUBLE = 6,
};

typedef void (*vyrf_protocol_status_cb)(vyrf_service_h service, vyrf_string protocol,
                                        vyrf_protocol_status status, void *user_data);
typedef void (*vyrf_get_request_cb)(vyrf_service_h service, vyrf_transaction_h transaction,
                                    vyrf_property_list_h list, void *user_data);
typedef void (*vyrf_set_request_cb)(vyrf_service_h service, vyrf_transaction_h transaction,
                                    vyrf_property_list_h list, void *user_data);
typedef void (*vyrf_cancel_request_cb)(vyrf_service_h service, vyrf_transaction_h transaction,
                                       void *user_data);

/* Wraps data/length without copying. */
vyrf_error vyrf_string_new(vyrf_string *out, const char *data, size_t length);

/* Returns NULL on failure. The callbacks are called with user_data as their last argument. */
vyrf_service_h vyrf_service_create(vyrf_string name, vyrf_string description,
                                   vyrf_protocol_status_cb on_protocol_status,
                                   vyrf_get_request_cb on_get, vyrf_set_request_cb on_set,
                                   vyrf_cancel_request_cb on_cancel, void *user_data);
vyrf_error vyrf_service_destroy(vyrf_service_h service);
vyrf_error vyrf_service_register_property(vyrf_service_h service, vyrf_string name, int type,
                                          int64_t first, int64_t second,
                                          vyrf_string description);
vyrf_error vyrf_service_unregister_property(vyrf_service_h service, vyrf_string name);
/* Takes over `list`. */
vyrf_error vyrf_service_send_set_property_result(vyrf_service_h service,
                                                 vyrf_transaction_h transaction,
                                                 vyrf_property_list_h list, vyrf_error error);

vyrf_property_list_h vyrf_property_list_create(void);             /* NULL on failure */
vyrf_property_list_h vyrf_property_list_copy(vyrf_property_list_h list); /* deep copy; NULL on failure */
void vyrf_property_list_destroy(vyrf_property_list_h list);
/* Takes over `property` on success. */
vyrf_error vyrf_property_list_push_property(vyrf_property_list_h list, VYRF_PROPERTY_H property,
                                            VYRF_ERROR_E error);
vyrf_error vyrf_property_list_pop(vyrf_property_list_h list, VYRF_PROPERTY_H *property,
                                  vyrf_error *error);
VYRF_PROPERTY_H vyrf_property_list_find(vyrf_property_list_h list, vyrf_string name);
VYRF_PROPERTY_H vyrf_property_list_get_first(vyrf_property_list_h list);
VYRF_PROPERTY_H vyrf_property_list_get_next(vyrf_property_list_h list, VYRF_PROPERTY_H property);
bool vyrf_property_list_empty(vyrf_property_list_h list);

VYRF_PROPERTY_H vyrf_property_create_string(vyrf_string name, vyrf_string value);
VYRF_PROPERTY_H vyrf_property_create_int(vyrf_string name, int value);
VYRF_PROPERTY_H vyrf_property_create_bool(vyrf_string name, bool value);
/* The getters lend the property's own bytes (valid while the property lives). For a NULL
   property, or a value of another kind, they set *out to {NULL, 0} and return non-zero. */
vyrf_error vyrf_property_get_name(vyrf_string *out, VYRF_PROPERTY_H property);
vyrf_error vyrf_property_get_string(vyrf_string *out, VYRF_PROPERTY_H property);
vyrf_error vyrf_property_get_json_string(vyrf_string *out, VYRF_PROPERTY_H property);
vyrf_error vyrf_property_get_int(VYRF_PROPERTY_H property, int *out);

#ifdef __cplusplus
}
#endif

#endif /* VYRF_H */
