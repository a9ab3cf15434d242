// MCAP, judged by those whose it is: @mcap/core reads what calib writes, with its index and its
// checksums, and @foxglove/schemas what is in it; calib reads what they and the serializations of
// ROS write, in each encoding and compression.
//
//   node mcap_test.mjs CALIB FOLDER
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";

import { createFileRegistry, fromBinary } from "@bufbuild/protobuf";
import { FileDescriptorSetSchema } from "@bufbuild/protobuf/wkt";
import { MessageWriter as Ros1Writer } from "@foxglove/rosmsg-serialization";
import { MessageWriter as Ros2Writer } from "@foxglove/rosmsg2-serialization";
import { ros1, ros2humble } from "@foxglove/rosmsg-msgs-common";
import schemas from "@foxglove/schemas/internal.js";
import zstd from "@foxglove/wasm-zstd";
import { McapIndexedReader, McapStreamReader, McapWriter } from "@mcap/core";
import lz4 from "lz4js";
import protobuf from "protobufjs";

const [calib, folder] = process.argv.slice(2);

function run(...args) {
  const done = spawnSync(calib, args, { encoding: "utf8" });
  assert.equal(done.status, 0, `calib ${args.join(" ")}: ${done.stderr}`);
  return done;
}

// --- What Foxglove says that its messages are --------------------------------------------------

const foxglove = new protobuf.Root();
protobuf.parse(`syntax = "proto3"; package google.protobuf;
                message Timestamp { int64 seconds = 1; int32 nanos = 2; }`, foxglove);
for (const name of ["Vector3", "Quaternion", "CameraCalibration", "FrameTransform",
                    "FrameTransforms", "RawImage", "CompressedImage"]) {
  const text = schemas.generateProto(schemas.foxgloveMessageSchemas[name], []);
  protobuf.parse(text.replace(/^import .*$/gm, ""), foxglove, { keepCase: true });
}
foxglove.resolveAll();

// --- What calib writes ---------------------------------------------------------------------------

const octets = Array.from({ length: 6 }, (_, i) => `\\${(64 + i).toString(8)}`).join("");
const rotation = [0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1];
const record = join(folder, "rig.RobotCalibration.txtpb");
writeFileSync(record, `
  camera {
    intrinsics { fx: 400 fy: 401 skew: 0 cx: 320.5 cy: 240.5 k: [-0.25, 0.125, 0.75]
                 p: [0.5, 0.0625] width: 640 height: 480 error_per_point: 0.25 }
    intrinsics_image { width: 3 height: 2 stride: 3 format: "GRAY8" imgdata: "${octets}" }
    name: "left" serial: "L7"
  }
  camera {
    intrinsics { fx: 190 fy: 191 skew: 0 cx: 255 cy: 256 k: [1, 2, 3, 4] width: 512 height: 512 }
    extrinsics { a: [${rotation}] }
    name: "right"
  }`);
const file = join(folder, "rig.mcap");
run("export", "--to", "mcap", record, "--output", file);
const bytes = readFileSync(file);

const indexed = await McapIndexedReader.Initialize({ readable: {
  size: async () => BigInt(bytes.length),
  read: async (offset, size) => bytes.subarray(Number(offset), Number(offset + size)),
} });
const messages = {};
for await (const message of indexed.readMessages({ validateCrcs: true })) {
  const { topic, schemaId, messageEncoding } = indexed.channelsById.get(message.channelId);
  const schema = indexed.schemasById.get(schemaId);
  assert.equal(messageEncoding, "protobuf");
  assert.equal(schema.encoding, "protobuf");
  (messages[topic] ??= []).push({ schema, data: message.data });
}
assert.deepEqual(Object.keys(messages).sort(), [
  "/left/calibration", "/left/intrinsics_image", "/record", "/right/calibration", "/tf"]);
assert.equal(indexed.statistics.messageCount, 6n);

const stream = new McapStreamReader({ validateCrcs: true });
stream.append(bytes);
let streamed = 0;
for (let part; (part = stream.nextRecord()) !== undefined;) streamed += part.type === "Message";
assert.ok(stream.done());
assert.equal(streamed, 6);

// The schema in the file has the fields of Foxglove's, by name, number and type.
function checkFields(theirs, ours) {
  const text = (type) => type.toLowerCase().replace(/.*\./, "");
  assert.deepEqual(
    ours.proto.field.map((field) => [field.name, field.number, field.label === 3]).sort(),
    theirs.fieldsArray.map((field) => [field.name, field.id, field.repeated]).sort(), theirs.name);
  for (const field of ours.fields) {
    const type = theirs.fields[field.name];
    assert.equal(field.message ? text(field.message.typeName) : type.type,
                 field.message ? text(type.type) : ["", "double", "float", "int64", "uint64", "int32",
                   "fixed64", "fixed32", "bool", "string", "group", "message", "bytes"][field.proto.type]);
    if (field.message && field.message.typeName.startsWith("foxglove.")) {
      checkFields(type.resolvedType, field.message);
    }
  }
}

function decoded(topic) {
  return messages[topic].map(({ schema, data }) => {
    const registry = createFileRegistry(fromBinary(FileDescriptorSetSchema, schema.data));
    const ours = registry.getMessage(schema.name);
    if (!schema.name.startsWith("foxglove.")) return fromBinary(ours, data);
    const theirs = foxglove.lookupType(schema.name);
    checkFields(theirs, ours);
    return theirs.toObject(theirs.decode(data), { defaults: true, arrays: true });
  });
}

const [left] = decoded("/left/calibration"), [right] = decoded("/right/calibration");
assert.equal(left.frame_id, "left");
assert.deepEqual([left.width, left.height, left.distortion_model], [640, 480, "plumb_bob"]);
assert.deepEqual(left.D, [-0.25, 0.125, 0.5, 0.0625, 0.75]);
assert.deepEqual(left.K, [400, 0, 320.5, 0, 401, 240.5, 0, 0, 1]);
assert.deepEqual(left.R, [1, 0, 0, 0, 1, 0, 0, 0, 1]);
assert.deepEqual(left.P, [400, 0, 320.5, 0, 0, 401, 240.5, 0, 0, 0, 1, 0]);
assert.deepEqual([right.distortion_model, right.D], ["kannala_brandt", [1, 2, 3, 4]]);

const [image] = decoded("/left/intrinsics_image");
assert.deepEqual([image.frame_id, image.width, image.height, image.encoding, image.step],
                 ["left", 3, 2, "mono8", 3]);
assert.deepEqual([...image.data], [64, 65, 66, 67, 68, 69]);

// A point of the child is where the record has it of the rig: of a, which maps to the camera, the
// columns of the rotation are the rows of what maps back.
const transforms = decoded("/tf");
assert.deepEqual(transforms.map((tf) => [tf.parent_frame_id, tf.child_frame_id]),
                 [["rig", "left"], ["rig", "right"]]);
const { translation: t, rotation: q } = transforms[1];
const close = (a, b) => assert.ok(Math.abs(a - b) < 1e-12, `${a} is not ${b}`);
[[t.x, -2], [t.y, 1], [t.z, -3], [q.x, 0], [q.y, 0], [q.z, -Math.SQRT1_2], [q.w, Math.SQRT1_2]]
  .forEach(([a, b]) => close(a, b));

const [whole] = decoded("/record");
assert.deepEqual(whole.camera.map((camera) => camera.name), ["left", "right"]);
assert.equal(whole.camera[0].serial, "L7");
assert.equal(whole.camera[0].intrinsics.errorPerPoint, 0.25);

// --- What calib reads ----------------------------------------------------------------------------

await zstd.isLoaded;
const stamp = { sec: 1700000000, nsec: 5, nanosec: 5 };
const lens = { width: 640, height: 480, distortion_model: "plumb_bob" };
const [D, K, R, P] = [left.D, left.K, left.R, left.P];
const region = { x_offset: 16, y_offset: 8, height: 480, width: 640, do_rectify: true };
const definitions = (all, name, names) =>
  [all[name], ...names.map((part) => all[part])].map((definition, i) =>
    ({ ...definition, name: i === 0 ? undefined : definition.name }));
const ros = { ...lens, header: { seq: 3, stamp, frame_id: "left" }, binning_x: 2, binning_y: 2,
              roi: region };
const calibration = foxglove.lookupType("foxglove.CameraCalibration");
const encodings = {
  protobuf: { schema: "foxglove.CameraCalibration", schemaEncoding: "protobuf",
              data: calibration.encode({ ...lens, timestamp: { seconds: 5 }, frame_id: "left", D, K, R,
                                         P }).finish() },
  ros1: { schema: "sensor_msgs/CameraInfo", schemaEncoding: "ros1msg",
          data: new Ros1Writer(definitions(ros1, "sensor_msgs/CameraInfo",
                               ["std_msgs/Header", "sensor_msgs/RegionOfInterest"]))
            .writeMessage({ ...ros, D, K, R, P }) },
  cdr: { schema: "sensor_msgs/msg/CameraInfo", schemaEncoding: "ros2msg",
         data: new Ros2Writer(definitions(ros2humble, "sensor_msgs/CameraInfo",
                              ["std_msgs/Header", "builtin_interfaces/Time",
                               "sensor_msgs/RegionOfInterest"]))
           .writeMessage({ ...ros, d: D, k: K, r: R, p: P }) },
};
const compressions = {
  "no chunk": { useChunks: false },
  none: {},
  zstd: { compressChunk: (data) => ({ compression: "zstd", compressedData: zstd.compress(data, 3) }) },
  lz4: { compressChunk: (data) => ({ compression: "lz4", compressedData: lz4.compress(data) }) },
};

async function write({ schema, schemaEncoding, data }, encoding, options) {
  const pieces = [];
  let size = 0n;
  const writable = { position: () => size,
                     write: async (piece) => { pieces.push(piece.slice()); size += BigInt(piece.length); } };
  const writer = new McapWriter({ writable, chunkSize: 1500, ...options });
  await writer.start({ profile: "", library: "mcap_test" });
  const schemaId = await writer.registerSchema(
    { name: schema, encoding: schemaEncoding, data: new Uint8Array(0) });
  const channelId = await writer.registerChannel(
    { topic: "/left/camera_info", schemaId, messageEncoding: encoding, metadata: new Map([["a", "b"]]) });
  await writer.addMetadata({ name: "made", metadata: new Map([["by", "mcap_test"]]) });
  for (let i = 0; i < 10; ++i) {
    await writer.addMessage({ channelId, sequence: i, logTime: BigInt(i), publishTime: 0n, data });
  }
  await writer.addAttachment({ name: "a", logTime: 0n, createTime: 0n, mediaType: "text/plain",
                               data: new Uint8Array([1, 2, 3]) });
  await writer.end();
  return Buffer.concat(pieces);
}

let read = 0;
for (const [encoding, message] of Object.entries(encodings)) {
  for (const [compression, options] of Object.entries(compressions)) {
    const recording = join(folder, `${encoding} ${compression}.mcap`);
    const recorded = await write(message, encoding, options);
    writeFileSync(recording, recorded);
    const { stdout, stderr } = run("import", recording, "--to", "json");
    assert.ok(!stderr.includes("damaged"), stderr);
    const camera = JSON.parse(stdout);
    assert.equal(camera.name, "left");
    const { fx, fy, skew, cx, cy, k, p, width, height } = camera.intrinsics;
    assert.deepEqual([fx, skew, cx, 0, fy, cy, 0, 0, 1], K);
    assert.deepEqual([k[0], k[1], ...p, k[2]], D);
    assert.deepEqual([width, height], [640, 480]);
    if (encoding !== "protobuf") {
      assert.equal(camera.intrinsics.offset_x ?? camera.intrinsics.offsetX, 16);
    }
    // Cut off in the middle: ten messages are in several chunks, of which some are whole.
    writeFileSync(recording, recorded.subarray(0, recorded.length / 2));
    const cut = run("import", recording, "--to", "json");
    assert.match(cut.stderr, /is damaged at byte \d+/);
    assert.deepEqual(JSON.parse(cut.stdout), camera);
    ++read;
  }
}
console.log(`6 messages of calib are read, and ${read} recordings are read by it`);
