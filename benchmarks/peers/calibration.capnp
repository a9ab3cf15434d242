# The records of the peers' table for Cap'n Proto.
@0xfa7020c5493aa4d7;

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("peers::capnproto");

struct SamplePoint {
  imgX @0 :Float32;
  imgY @1 :Float32;
  tgtX @2 :Float32;
  tgtY @3 :Float32;
}

struct Intrinsics {
  fx @0 :Float64;
  fy @1 :Float64;
  skew @2 :Float64;
  cx @3 :Float64;
  cy @4 :Float64;
  k @5 :List(Float64);
  p @6 :List(Float64);
  width @7 :Int32;
  height @8 :Int32;
  errorPerPoint @9 :Float64;
  xBin @10 :Text;
  offsetX @11 :Float32;
  offsetY @12 :Float32;
  binCenter @13 :Float32;
  binSize @14 :Float32;
  samplePoints @15 :List(SamplePoint);
  tgtZ @16 :Float32;
  tgtWidth @17 :Int32;
  tgtHeight @18 :Int32;
}

struct Image {
  width @0 :Int32;
  height @1 :Int32;
  stride @2 :Int32;
  format @3 :Text;
  imgdata @4 :Data;
}

struct Extrinsics {
  a @0 :List(Float64);
}

struct Camera {
  intrinsics @0 :Intrinsics;
  intrinsicsImage @1 :Image;
  extrinsics @2 :Extrinsics;
  extrinsicsImage @3 :Image;
  name @4 :Text;
  model @5 :Text;
  serial @6 :Text;
}

struct Robot {
  camera @0 :List(Camera);
}

struct Metadata {
  time @0 :Int64;
  baseSerial @1 :Text;
  audioSerial @2 :Text;
  temperature @3 :Float32;
}

struct Adjustment {
  params @0 :Extrinsics;
  metadata @1 :Metadata;
}

struct Gyroscope {
  gyroscopeGain @0 :Float32;
  metadata @1 :Metadata;
}

struct Base {
  wheelBase @0 :Float32 = 0.4064;
  baseWidth @1 :Float32 = 0.457;
  baseLength @2 :Float32 = 0.7;
  globalTransform @3 :Adjustment;
  gyroscopeCal @4 :Gyroscope;
}

struct ZoomSample {
  zoom @0 :Float64;
  fxy @1 :Float64;
  cx @2 :Float64;
  cy @3 :Float64;
  k1 @4 :Float64;
  k4 @5 :Float64;
  p1 @6 :Float64;
  p2 @7 :Float64;
  errorPerPoint @8 :Float64;
}

struct PtzIntrinsics {
  zx @0 :Float64;
  zy @1 :Float64;
  width @2 :Int32;
  height @3 :Int32;
  samples @4 :List(ZoomSample);
  samplesZoom0 @5 :Int32;
  samplesZoomStep @6 :Int32;
  zoomMin @7 :Int32;
  zoomMax @8 :Int32;
}

struct PanTilt {
  panExt @0 :Extrinsics;
  tiltExt @1 :Extrinsics;
  deviceExt @2 :Extrinsics;
  radsPerPanUnit @3 :Float32;
  radsPerTiltUnit @4 :Float32;
  panOffset @5 :Float32;
  tiltOffset @6 :Float32;
  panMin @7 :Int32;
  panMax @8 :Int32;
  tiltMin @9 :Int32;
  tiltMax @10 :Int32;
  maxPanSpeed @11 :Int32;
  maxTiltSpeed @12 :Int32;
  avgModelError @13 :Float32;
  maxModelError @14 :Float32;
}

struct PtzCamera {
  intrinsics @0 :PtzIntrinsics;
  panTilt @1 :PanTilt;
}

struct PtzSystem {
  ptzCamera @0 :PtzCamera;
  laser @1 :PanTilt;
  otherCameras @2 :Robot;
}
