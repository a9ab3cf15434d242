// The exporters. Each writes cameras as another tool reads them; export_NAME.cc has the facts of
// its files, which docs/calib-export.md shows, and export_rig.h what they have in common.
#ifndef CALIB_TOOLS_EXPORTERS_H_
#define CALIB_TOOLS_EXPORTERS_H_

#include <string>
#include <vector>

#include "calib/tools/export_rig.h"
#include "calib/tools/foreign.h"

namespace calib {

Exporter CameraInfoExporter();
Exporter CamchainExporter();
Exporter OpenVinsExporter();
Exporter FileStorageExporter();
Exporter StereoExporter();
Exporter OrbSlamExporter();
Exporter CamodocalExporter();
Exporter ColmapExporter();
Exporter ColmapRigExporter();
Exporter NerfstudioExporter();
Exporter BasaltExporter();
Exporter MrcalExporter();
Exporter McapExporter();
Exporter StaticTransformsExporter();
Exporter UrdfExporter();

// All of them, in the order of --help.
const std::vector<Exporter>& Exporters();
// That of a format; nullptr if there is none.
const Exporter* FindExporter(const std::string& format);

// Takes rectification and projection over from an earlier camera_info. Throws Failure if it has
// none, or is of images of another size than those of the camera.
void TakeProjection(const Foreign& camera_info, const CameraInRecord& camera,
                    ExportOptions* options);

}  // namespace calib

#endif  // CALIB_TOOLS_EXPORTERS_H_
