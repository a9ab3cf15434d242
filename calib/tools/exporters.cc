#include "calib/tools/exporters.h"

namespace calib {

const std::vector<Exporter>& Exporters() {
  static const std::vector<Exporter> all = {
      CameraInfoExporter(), CamchainExporter(),         FileStorageExporter(), StereoExporter(),
      OrbSlamExporter(),    OpenVinsExporter(),         CamodocalExporter(),   BasaltExporter(),
      MrcalExporter(),      ColmapExporter(),           ColmapRigExporter(),   NerfstudioExporter(),
      McapExporter(),       StaticTransformsExporter(), UrdfExporter()};
  return all;
}

const Exporter* FindExporter(const std::string& format) {
  for (const Exporter& exporter : Exporters()) {
    if (exporter.format == format) return &exporter;
  }
  return nullptr;
}

}  // namespace calib
