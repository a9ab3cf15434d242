/* calibration_formats.h for C, and for languages that call C: the same functions, of the same
 * library. Records are bytes: a RobotCalibration in the binary encoding. What options and notes
 * mean is said there.
 *
 * Names and words end with a zero byte; those that are not needed may be NULL. What is passed
 * remains the caller's. What is returned remains as it is until calibration_formats_free() takes
 * it, and is never NULL. */
#ifndef ZARVO_CALIBRATION_FORMATS_C_H_
#define ZARVO_CALIBRATION_FORMATS_C_H_

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* In the order of the enumerators there: statuses of Status, 0 being fine, kinds of Note::Kind. */
typedef int calibration_formats_status;
typedef int calibration_formats_kind;

typedef struct calibration_formats_file {
  const char* name;
  const char* bytes;
  size_t size;
} calibration_formats_file;

typedef struct calibration_formats_note {
  calibration_formats_kind kind;
  const char* text;
} calibration_formats_note;

typedef struct calibration_formats_result {
  calibration_formats_status status;
  const char* error;  /* "" unless it was refused */
  const char* format; /* that was read or written */
  const calibration_formats_note* notes;
  size_t note_count;
  /* Unless the status is 0, none. Of what was read, one without a name: the record. */
  const calibration_formats_file* files;
  size_t file_count;
} calibration_formats_result;

typedef struct calibration_formats_read_options {
  const char *format, *lens;
  int lossy;
} calibration_formats_read_options;

typedef struct calibration_formats_write_options {
  const char* lens;
  int lossy, from_camera, width, height;
  const char *name, *frame;
  const double *rectification, *projection; /* 9 and 12 numbers, or both NULL */
} calibration_formats_write_options;

/* The format of that number, from 0; NULL behind the last one, and without memory. They live as
 * long as the program. */
const char* calibration_formats_readable(size_t number);
const char* calibration_formats_writable(size_t number);

/* files[count]; options may be NULL. */
const calibration_formats_result* calibration_formats_read(
    const calibration_formats_file* files, size_t count,
    const calibration_formats_read_options* options);

/* Options may be NULL. The text is one file without a name, and refused if there would be more. */
const calibration_formats_result* calibration_formats_write(
    const char* format, const char* record, size_t size,
    const calibration_formats_write_options* options);
const calibration_formats_result* calibration_formats_write_text(
    const char* format, const char* record, size_t size,
    const calibration_formats_write_options* options);

/* Of NULL, nothing happens. */
void calibration_formats_free(const calibration_formats_result* result);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif /* ZARVO_CALIBRATION_FORMATS_C_H_ */
