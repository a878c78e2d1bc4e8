/* Device-information functions of the platform. Getters fill a caller buffer
 * of `size` bytes (always NUL-terminated) and return a status; a value that
 * does not fit is a failure. Status conventions differ per function and are
 * part of the interface:
 *   0 success, non-zero failure: sn, mac, deviceid, channel_secret, iot_did,
 *     version, channel, model, appid, countrycode, imei, carrier, uid,
 *     broker_host, broker_port getters; deviceid_set, channel_secret_set,
 *     broker_host_set, broker_port_set.
 *   negative failure, otherwise success: device_token_get/_set,
 *     device_token_sign_get/_set, upgrade_date_get/_set, uid_clean,
 *     file_read_string (returns the number of bytes read).
 *   positive success: uid_set.
 */
#ifndef VELMAR_DEVICE_DEVICEINFO_H
#define VELMAR_DEVICE_DEVICEINFO_H

#include <stdint.h>

#include "velmar/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The platform byte string. */
typedef struct str_s {
    uint32_t len;
    unsigned char* data;
} str_t;

VELMAR_PORT_EXPORT int sn_get(char* buf, int size);
VELMAR_PORT_EXPORT int mac_get(char* buf, int size);
VELMAR_PORT_EXPORT int deviceid_get(char* buf, int size);
VELMAR_PORT_EXPORT int channel_secret_get(char* buf, int size);
VELMAR_PORT_EXPORT int iot_did_get(char* buf, int size);
VELMAR_PORT_EXPORT int version_get(char* buf, int size);
VELMAR_PORT_EXPORT int channel_get(char* buf, int size);
VELMAR_PORT_EXPORT int model_get(char* buf, int size);
VELMAR_PORT_EXPORT int appid_get(char* buf, int size);
VELMAR_PORT_EXPORT int countrycode_get(char* buf, int size);
VELMAR_PORT_EXPORT int imei_get(char* buf, int size);
VELMAR_PORT_EXPORT int carrier_get(char* buf, int size);
VELMAR_PORT_EXPORT int uid_get(char* buf, int size);
VELMAR_PORT_EXPORT int broker_host_get(char* buf, int size);
VELMAR_PORT_EXPORT int broker_port_get(char* buf, int size);
VELMAR_PORT_EXPORT int upgrade_date_get(char* buf, int size);
VELMAR_PORT_EXPORT int device_token_get(char* buf, int size);
VELMAR_PORT_EXPORT int device_token_sign_get(char* buf, int size);
/* Signal strength of the current network; 0 when unknown. */
VELMAR_PORT_EXPORT int rssi_get(void);

VELMAR_PORT_EXPORT int deviceid_set(const char* value);
VELMAR_PORT_EXPORT int channel_secret_set(const char* value);
VELMAR_PORT_EXPORT int device_token_set(const char* value);
VELMAR_PORT_EXPORT int device_token_sign_set(const char* value);
VELMAR_PORT_EXPORT int upgrade_date_set(const char* value);
VELMAR_PORT_EXPORT int uid_set(const char* value);
VELMAR_PORT_EXPORT int broker_host_set(const char* value);
VELMAR_PORT_EXPORT int broker_port_set(const char* value);

/* Non-zero when `text` is not a usable administrator id. */
VELMAR_PORT_EXPORT int uid_isvalid_str(const char* text);
/* Forgets the administrator id. */
VELMAR_PORT_EXPORT int uid_clean(void);
/* Run the device's bind script with "bind" / "unbind"; its exit status. */
VELMAR_PORT_EXPORT int bind_uid(void);
VELMAR_PORT_EXPORT int dev_restore(void);

/* Reads the file at device path `path` into `buf`; bytes read, or negative. */
VELMAR_PORT_EXPORT int file_read_string(const char* path, char* buf, int size);

/* HMAC-SHA256 of `data` keyed with `key`; a new byte string of 32 bytes to be
 * released with str_destroy, or NULL on failure. */
VELMAR_PORT_EXPORT str_t* str_hmac_sha256(const str_t* data, const str_t* key);
/* Debug dump of a byte string under a label (nothing is printed unless the
 * port's debug output is on). NULL is accepted. */
VELMAR_PORT_EXPORT void str_hexdump(const char* label, const str_t* s);
VELMAR_PORT_EXPORT void str_destroy(str_t* s);

#ifdef __cplusplus
}
#endif

#endif
