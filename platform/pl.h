/* The platform daemon's C interface to hardware objects, and its services to a driver plug-in.
 *
 * A plug-in exports a pair of functions for each kind of object: pl_<type>_init, given the hardware
 * topology as JSON text, and pl_<type>_add, given the description of one object as JSON text. The
 * record that pl_<type>_add returns carries a table of operations, its own size first.
 *
 * Everything is called from the daemon's one event-loop thread.
 */
#ifndef ORBIS_PLATFORM_PL_H
#define ORBIS_PLATFORM_PL_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What an operation came to. Statuses of a bus are passed up unchanged. */
typedef enum pl_status {
   PL_STATUS_OK = 0,
   PL_STATUS_NOT_MANAGED = 1,  /* from a slot: nothing there that can be managed */
   PL_STATUS_DEVICE_FAULT = 2, /* the device itself reports a fault */
   PL_STATUS_UNSUPPORTED = 3,  /* a setting that the device can't show */
   PL_STATUS_SOCKET = 4,       /* the SMBus server can't be reached, or a short I2C block read */
   PL_STATUS_NOT_PROVIDED = 5, /* the platform doesn't provide this */
   PL_STATUS_TRANSACTION = 6,  /* the SMBus server's answer is a failure or incomplete; no memory */
} pl_status;

typedef enum pl_led_status {
   PL_LED_OFF = 0,
   PL_LED_GOOD = 1,
   PL_LED_WARNING = 2,
   PL_LED_BAD = 3,
   PL_LED_INACTIVE = 4,
   PL_LED_UNKNOWN = 5,
   PL_LED_BEACON = 6,
} pl_led_status;

/* ---- services of the daemon; a plug-in binds them weakly ------------------------------------ */

typedef struct pl_timer *pl_timer_handle;
typedef struct pl_fd_watcher *pl_fd_watcher_handle;

/* printf-like. Level 0: entry points, object creation, failures; up to 7: the finest detail. */
void pl_trace( int level, const char *format, ... ) __attribute__( ( format( printf, 2, 3 ) ) );

/* A timer that is not armed yet; null on failure. */
pl_timer_handle pl_timer_add( void ( *callback )( void * ), void *context );
/* Arms it for one expiry; 0 on success. */
int pl_timer_set( pl_timer_handle, unsigned int milliseconds );
/* Disarms it; 0 on success. */
int pl_timer_cancel( pl_timer_handle );
void pl_timer_delete( pl_timer_handle );
void pl_fd_watcher_delete( pl_fd_watcher_handle );

/* ---- objects ---------------------------------------------------------------------------------
 * A record is three pointers: one for the daemon, the operations, one for the plug-in. Entries of a
 * table that are null are not provided. Outputs are written on success only, unless told otherwise.
 */

/* A slot for a power supply or fan module. get_presence: PL_STATUS_OK hands out the module's
 * description line (malloc'd, the caller's to free); 1 says that nothing managed is there. */
typedef struct pl_slot pl_slot;
typedef struct pl_slot_ops {
   uint32_t size;
   pl_status ( *get_presence )( pl_slot *, char **description );
} pl_slot_ops;
struct pl_slot {
   void *reserved;
   const pl_slot_ops *ops;
   void *priv;
};

typedef struct pl_led pl_led;
typedef struct pl_led_ops {
   uint32_t size;
   pl_status ( *set_light_setting )( pl_led *, pl_led_status );
} pl_led_ops;
struct pl_led {
   void *reserved;
   const pl_led_ops *ops;
   void *priv;
};

/* Degrees Celsius. */
typedef struct pl_temp_sensor pl_temp_sensor;
typedef struct pl_temp_sensor_ops {
   uint32_t size;
   void ( *unused )( void ); /* always null */
   pl_status ( *get_temperature )( pl_temp_sensor *, float * );
} pl_temp_sensor_ops;
struct pl_temp_sensor {
   void *reserved;
   const pl_temp_sensor_ops *ops;
   void *priv;
};

typedef struct pl_fan pl_fan;
typedef struct pl_fan_ops {
   uint32_t size;
   void ( *unused )( void ); /* always null */
   pl_status ( *get_rpm )( pl_fan *, int * );
   pl_status ( *set_rpm )( pl_fan *, int );
} pl_fan_ops;
struct pl_fan {
   void *reserved;
   const pl_fan_ops *ops;
   void *priv;
};

/* Volts, amperes, watts. */
typedef struct pl_psu pl_psu;
typedef struct pl_psu_ops {
   uint32_t size;
   void ( *unused )( void ); /* always null */
   pl_status ( *get_power_ok )( pl_psu *, int * );
   pl_status ( *get_input_current )( pl_psu *, float * );
   pl_status ( *get_output_current )( pl_psu *, float * );
   pl_status ( *get_input_voltage )( pl_psu *, float * );
   pl_status ( *get_output_voltage )( pl_psu *, float * );
   pl_status ( *get_input_power )( pl_psu *, float * );
   pl_status ( *get_output_power )( pl_psu *, float * );
} pl_psu_ops;
struct pl_psu {
   void *reserved;
   const pl_psu_ops *ops;
   void *priv;
};

typedef struct pl_gpio pl_gpio;
typedef struct pl_gpio_ops {
   uint32_t size;
   pl_status ( *bit_set )( pl_gpio * );
   pl_status ( *bit_clear )( pl_gpio * );
   pl_status ( *bit_read )( pl_gpio *, unsigned int * );
} pl_gpio_ops;
struct pl_gpio {
   void *reserved;
   const pl_gpio_ops *ops;
   void *priv;
};

/* A transceiver cage. get_presence returns 1 or 0, not a status. */
typedef struct pl_xcvr pl_xcvr;
enum { PL_XCVR_SFP = 0, PL_XCVR_QSFP = 1 };
typedef struct pl_sfp_ops {
   uint32_t size;
   int ( *get_presence )( pl_xcvr * );
   pl_status ( *get_tx_fault )( pl_xcvr *, int * );
   pl_status ( *get_rx_los )( pl_xcvr *, int * );
   pl_status ( *get_tx_disable )( pl_xcvr *, int * );
   pl_status ( *set_tx_disable )( pl_xcvr *, int );
} pl_sfp_ops;
typedef struct pl_qsfp_ops {
   uint32_t size;
   int ( *get_presence )( pl_xcvr * );
   pl_status ( *get_mod_sel )( pl_xcvr *, int * );
   pl_status ( *set_mod_sel )( pl_xcvr *, int );
   pl_status ( *get_lp_mode )( pl_xcvr *, int * );
   pl_status ( *set_lp_mode )( pl_xcvr *, int );
   pl_status ( *get_reset )( pl_xcvr *, int * );
   pl_status ( *set_reset )( pl_xcvr *, int );
   pl_status ( *get_interrupt )( pl_xcvr *, int * );
} pl_qsfp_ops;
typedef struct pl_xcvr_ops {
   uint32_t size;
   uint32_t kind; /* PL_XCVR_SFP or PL_XCVR_QSFP: which of the two below */
   union {
      pl_sfp_ops sfp;
      pl_qsfp_ops qsfp;
   };
} pl_xcvr_ops;
struct pl_xcvr {
   void *reserved;
   const pl_xcvr_ops *ops;
   void *priv;
};

/* Raw SMBus access to one device; operations as in the SMBus standard. block_read writes up to 255
 * bytes to its buffer. */
typedef struct pl_smbus pl_smbus;
typedef struct pl_smbus_ops {
   uint32_t size;
   pl_status ( *quick_command )( pl_smbus *, int );
   pl_status ( *receive_byte )( pl_smbus *, uint8_t * );
   pl_status ( *send_byte )( pl_smbus *, uint8_t );
   pl_status ( *read_byte )( pl_smbus *, uint8_t command, uint8_t * );
   pl_status ( *write_byte )( pl_smbus *, uint8_t command, uint8_t );
   pl_status ( *read_word )( pl_smbus *, uint8_t command, uint16_t * );
   pl_status ( *write_word )( pl_smbus *, uint8_t command, uint16_t );
   pl_status ( *block_read )( pl_smbus *, uint8_t command, uint8_t *, unsigned int *length );
   pl_status ( *block_write )( pl_smbus *, uint8_t command, const uint8_t *, unsigned int );
   pl_status ( *i2c_block_read )( pl_smbus *, uint8_t command, uint8_t *, unsigned int );
   pl_status ( *i2c_block_write )( pl_smbus *, uint8_t command, const uint8_t *, unsigned int );
   pl_status ( *process_call )( pl_smbus *, uint8_t command, uint16_t, uint16_t * );
   pl_status ( *block_process_call )( pl_smbus *, uint8_t command, const uint8_t *, uint8_t,
                                      uint8_t *, uint8_t * );
} pl_smbus_ops;
struct pl_smbus {
   void *reserved;
   const pl_smbus_ops *ops;
   void *priv;
};

/* The switch itself: its record is two pointers. */
typedef struct pl_system pl_system;
typedef struct pl_system_ops {
   uint32_t size;
   pl_status ( *poweroff )( pl_system * );
   pl_status ( *powercycle )( pl_system * );
   pl_status ( *get_reload_cause )( pl_system *, char ( *cause )[100], long *time,
                                    char ( *description )[500] );
} pl_system_ops;
struct pl_system {
   void *priv;
   const pl_system_ops *ops;
};

/* ---- what a plug-in exports ------------------------------------------------------------------ */

#pragma GCC visibility push( default )

pl_status pl_slot_init( const char *topology );
pl_status pl_led_init( const char *topology );
pl_status pl_temp_sensor_init( const char *topology );
pl_status pl_fan_init( const char *topology );
pl_status pl_xcvr_init( const char *topology );
pl_status pl_psu_init( const char *topology );
pl_status pl_gpio_init( const char *topology );
pl_status pl_smbus_init( const char *topology );
pl_status pl_system_init( const char *topology );

/* Each returns null on failure. The text is kept by the caller for as long as the process lives. */
pl_slot *pl_slot_add( const char *json );
pl_led *pl_led_add( const char *json );
pl_temp_sensor *pl_temp_sensor_add( const char *json, float alert, float critical );
pl_fan *pl_fan_add( const char *json );
pl_xcvr *pl_xcvr_add( const char *json );
pl_psu *pl_psu_add( const char *json );
pl_gpio *pl_gpio_add( const char *json );
/* A device-argument document, or the label of a topology device. */
pl_smbus *pl_smbus_add( const char *text, uint8_t address );
pl_system *pl_system_add( const char *json );

#pragma GCC visibility pop

#ifdef __cplusplus
}
#endif

#endif
