/* calibration_geometry.h for C, and for languages that call C: the same functions, of the same
 * library, with numbers in arrays. What they mean is said there.
 *
 * Points are x y z, pixels u v; transforms are 4x4 by rows, and rotations are in m[0..2], m[4..6]
 * and m[8..10] of them. Angles are radians; lengths have the caller's unit. Arrays must have the
 * lengths that are named. What a status is not 0 for is not a number, or is as its type is when it
 * is made. Nothing is allocated that the caller would own. */
#ifndef ZARVO_CALIBRATION_GEOMETRY_C_H_
#define ZARVO_CALIBRATION_GEOMETRY_C_H_

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* In the order of the enumerators there: lenses of Lens, statuses of Status, 0 being fine. */
typedef int calibration_geometry_lens;
typedef int calibration_geometry_status;

typedef struct calibration_geometry_camera {
  calibration_geometry_lens lens;
  double fx, fy, skew, cx, cy;
  double distortion[14]; /* k1 k2 p1 p2 k3 k4 k5 k6 s1 s2 s3 s4 tx ty; k1 k2 k3 k4; w; lambda */
  double shape[2];       /* xi; xi, alpha; alpha, beta */
  int width, height;     /* 0 if not known */
} calibration_geometry_camera;

/* A sentence's end that lives as long as the program. */
const char* calibration_geometry_explain(calibration_geometry_status status);

/* points[3 count], pixels[2 count], statuses[count] */
void calibration_geometry_project(const calibration_geometry_camera* camera, const double* points,
                                  size_t count, double* pixels,
                                  calibration_geometry_status* statuses);
/* pixels[2 count], rays[3 count], statuses[count] */
void calibration_geometry_unproject(const calibration_geometry_camera* camera, const double* pixels,
                                    size_t count, double* rays,
                                    calibration_geometry_status* statuses);
double calibration_geometry_largest_angle(const calibration_geometry_camera* camera);

void calibration_geometry_invert(const double transform[16], double inverse[16]);
void calibration_geometry_compose(const double second[16], const double first[16],
                                  double product[16]);
/* points[3 count], moved[3 count] */
void calibration_geometry_apply(const double transform[16], const double* points, size_t count,
                                double* moved);
double calibration_geometry_rotation_defect(const double transform[16]);
/* 1 if the transform has one now, 0 if there is no nearest rotation. */
int calibration_geometry_orthonormalize(double transform[16]);
void calibration_geometry_quaternion_of(const double transform[16], double wxyz[4]);
void calibration_geometry_roll_pitch_yaw_of(const double transform[16], double roll_pitch_yaw[3]);
void calibration_geometry_rotation_vector_of(const double transform[16], double vector[3]);
void calibration_geometry_from_quaternion(const double wxyz[4], const double translation[3],
                                          double transform[16]);
void calibration_geometry_from_roll_pitch_yaw(const double roll_pitch_yaw[3],
                                              const double translation[3], double transform[16]);
void calibration_geometry_from_rotation_vector(const double vector[3], const double translation[3],
                                               double transform[16]);

typedef struct calibration_geometry_rectified {
  calibration_geometry_status status;
  int vertical, swapped;
  double baseline;
  double r1[9], r2[9], p1[12], p2[12], q[16];
} calibration_geometry_rectified;

calibration_geometry_rectified calibration_geometry_rectify(
    const calibration_geometry_camera* first, const calibration_geometry_camera* second,
    const double second_from_first[16], double alpha, int zero_disparity);

typedef struct calibration_geometry_difference {
  calibration_geometry_status status;
  double after_from_before[16];
  double largest, mean, where[2];
  size_t compared, count;
} calibration_geometry_difference;

/* Of the pixels of the grid, of which there are `count`, it tells the first `room`:
 * displacements[4 room] as u v and by how much further, statuses[room]. */
calibration_geometry_difference calibration_geometry_compare(
    const calibration_geometry_camera* before, const calibration_geometry_camera* after, int fit,
    double distance, int columns, size_t room, double* displacements,
    calibration_geometry_status* statuses);

typedef struct calibration_geometry_fitted_lens {
  calibration_geometry_status status;
  calibration_geometry_camera camera;
  double rms, largest, where[2], angle, reach;
  size_t unseen;
} calibration_geometry_fitted_lens;

calibration_geometry_fitted_lens calibration_geometry_fit_lens(
    const calibration_geometry_camera* source, calibration_geometry_lens target, int coefficients,
    double max_error, double largest_angle);

typedef struct calibration_geometry_resized {
  calibration_geometry_status status;
  calibration_geometry_camera camera;
  double pixel_map[6], new_from_old[16];
} calibration_geometry_resized;

calibration_geometry_resized calibration_geometry_scale(const calibration_geometry_camera* camera,
                                                        int width, int height);
calibration_geometry_resized calibration_geometry_crop(const calibration_geometry_camera* camera,
                                                       int u, int v, int width, int height);
calibration_geometry_resized calibration_geometry_bin(const calibration_geometry_camera* camera,
                                                      int columns, int rows, int decimate);
calibration_geometry_resized calibration_geometry_rotate(const calibration_geometry_camera* camera,
                                                         int quarters);

typedef struct calibration_geometry_pose {
  calibration_geometry_status status;
  double camera_from_target[16];
  double rms;
} calibration_geometry_pose;

/* points[4 count]: x y on the target, u v in the image */
calibration_geometry_pose calibration_geometry_fit_pose(const calibration_geometry_camera* camera,
                                                        double z, const double* points,
                                                        size_t count);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif /* ZARVO_CALIBRATION_GEOMETRY_C_H_ */
