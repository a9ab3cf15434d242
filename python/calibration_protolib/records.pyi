# Made by make_stubs.py of the schema's descriptor set; `cmake --build BUILD --target python_stubs`
# makes it anew. Fields are described in calibration_common/calibration.proto.
from typing import Any, Iterable, Iterator, List, Literal, NoReturn, Optional, Protocol, TypeVar
from typing import overload

from google.protobuf.message import Message

_V = TypeVar("_V")
_M = TypeVar("_M", bound=Message)

# What a repeated field of numbers or texts is.
class _Values(Protocol[_V]):
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[_V]: ...
    def __contains__(self, value: object) -> bool: ...
    @overload
    def __getitem__(self, index: int) -> _V: ...
    @overload
    def __getitem__(self, index: slice) -> List[_V]: ...
    @overload
    def __setitem__(self, index: int, value: _V) -> None: ...
    @overload
    def __setitem__(self, index: slice, value: Iterable[_V]) -> None: ...
    def __delitem__(self, index: int | slice) -> None: ...
    def append(self, value: _V) -> None: ...
    def extend(self, values: Iterable[_V]) -> None: ...
    def insert(self, index: int, value: _V) -> None: ...
    def pop(self, index: int = ...) -> _V: ...
    def remove(self, value: _V) -> None: ...

# What a repeated field of messages is. Elements are added, not replaced.
class _Messages(Protocol[_M]):
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[_M]: ...
    @overload
    def __getitem__(self, index: int) -> _M: ...
    @overload
    def __getitem__(self, index: slice) -> List[_M]: ...
    def __delitem__(self, index: int | slice) -> None: ...
    def add(self, **fields: Any) -> _M: ...
    def append(self, message: _M) -> None: ...
    def extend(self, messages: Iterable[_M]) -> None: ...
    def pop(self, index: int = ...) -> _M: ...
    def remove(self, message: _M) -> None: ...

__all__ = [
    "BaseCalibrationProto",
    "CalibrationImage",
    "CalibrationMetadataProto",
    "CameraCalibration",
    "CameraCalibrationAdjustmentProto",
    "CameraExtrinsics",
    "CameraIntrinsics",
    "CameraIntrinsicsSamplePoints",
    "FocusCheckProto",
    "FocusCheckSetProto",
    "FocusInfo",
    "FocusInfoItem",
    "GyroscopeCalibrationProto",
    "MarkerPositionInfo",
    "MarkerPositionSet",
    "PTZCameraParameters",
    "PTZIntrinsics",
    "PTZIntrinsicsItem",
    "PTZSystemCalibration",
    "PanTiltSystemParameters",
    "RobotCalibration",
]

class MarkerPositionInfo(Message):
    x: float
    y: float
    z: float
    marker_id: int
    def __init__(
        self,
        *,
        x: Optional[float] = ...,
        y: Optional[float] = ...,
        z: Optional[float] = ...,
        marker_id: Optional[int] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["x", "y", "z", "marker_id"]) -> bool: ...
    def ClearField(self, field_name: Literal["x", "y", "z", "marker_id"]) -> None: ...

class MarkerPositionSet(Message):
    @property
    def pos(self) -> _Messages[MarkerPositionInfo]: ...
    @property
    def head_center(self) -> _Values[float]: ...
    @property
    def nav_center(self) -> _Values[float]: ...
    def __init__(
        self,
        *,
        pos: Iterable[MarkerPositionInfo] = ...,
        head_center: Iterable[float] = ...,
        nav_center: Iterable[float] = ...,
    ) -> None: ...
    def HasField(self, field_name: NoReturn) -> bool: ...
    def ClearField(self, field_name: Literal["pos", "head_center", "nav_center"]) -> None: ...

class CameraIntrinsicsSamplePoints(Message):
    img_x: float
    img_y: float
    tgt_x: float
    tgt_y: float
    def __init__(
        self,
        *,
        img_x: Optional[float] = ...,
        img_y: Optional[float] = ...,
        tgt_x: Optional[float] = ...,
        tgt_y: Optional[float] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["img_x", "img_y", "tgt_x", "tgt_y"]) -> bool: ...
    def ClearField(self, field_name: Literal["img_x", "img_y", "tgt_x", "tgt_y"]) -> None: ...

class CameraIntrinsics(Message):
    fx: float
    fy: float
    skew: float
    cx: float
    cy: float
    @property
    def k(self) -> _Values[float]: ...
    @property
    def p(self) -> _Values[float]: ...
    width: int
    height: int
    error_per_point: float
    x_bin: str
    offset_x: float
    offset_y: float
    bin_center: float
    bin_size: float
    @property
    def sample_points(self) -> _Messages[CameraIntrinsicsSamplePoints]: ...
    tgt_z: float
    tgt_width: int
    tgt_height: int
    def __init__(
        self,
        *,
        fx: Optional[float] = ...,
        fy: Optional[float] = ...,
        skew: Optional[float] = ...,
        cx: Optional[float] = ...,
        cy: Optional[float] = ...,
        k: Iterable[float] = ...,
        p: Iterable[float] = ...,
        width: Optional[int] = ...,
        height: Optional[int] = ...,
        error_per_point: Optional[float] = ...,
        x_bin: Optional[str] = ...,
        offset_x: Optional[float] = ...,
        offset_y: Optional[float] = ...,
        bin_center: Optional[float] = ...,
        bin_size: Optional[float] = ...,
        sample_points: Iterable[CameraIntrinsicsSamplePoints] = ...,
        tgt_z: Optional[float] = ...,
        tgt_width: Optional[int] = ...,
        tgt_height: Optional[int] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["fx", "fy", "skew", "cx", "cy", "width", "height", "error_per_point", "x_bin", "offset_x", "offset_y", "bin_center", "bin_size", "tgt_z", "tgt_width", "tgt_height"]) -> bool: ...
    def ClearField(self, field_name: Literal["fx", "fy", "skew", "cx", "cy", "k", "p", "width", "height", "error_per_point", "x_bin", "offset_x", "offset_y", "bin_center", "bin_size", "sample_points", "tgt_z", "tgt_width", "tgt_height"]) -> None: ...

class CalibrationImage(Message):
    width: int
    height: int
    stride: int
    format: str
    imgdata: bytes
    def __init__(
        self,
        *,
        width: Optional[int] = ...,
        height: Optional[int] = ...,
        stride: Optional[int] = ...,
        format: Optional[str] = ...,
        imgdata: Optional[bytes] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["width", "height", "stride", "format", "imgdata"]) -> bool: ...
    def ClearField(self, field_name: Literal["width", "height", "stride", "format", "imgdata"]) -> None: ...

class FocusInfoItem(Message):
    target_id: int
    cutoff_threshold: float
    cutoff_cycles_per_pix: float
    cutoff_cycles_per_mm: float
    pix_per_mm: float
    @property
    def transfer_function(self) -> _Values[float]: ...
    valid_min: int
    valid_max: int
    target_code: int
    def __init__(
        self,
        *,
        target_id: Optional[int] = ...,
        cutoff_threshold: Optional[float] = ...,
        cutoff_cycles_per_pix: Optional[float] = ...,
        cutoff_cycles_per_mm: Optional[float] = ...,
        pix_per_mm: Optional[float] = ...,
        transfer_function: Iterable[float] = ...,
        valid_min: Optional[int] = ...,
        valid_max: Optional[int] = ...,
        target_code: Optional[int] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["target_id", "target_code", "cutoff_threshold", "cutoff_cycles_per_pix", "cutoff_cycles_per_mm", "pix_per_mm", "valid_min", "valid_max"]) -> bool: ...
    def ClearField(self, field_name: Literal["target_id", "target_code", "cutoff_threshold", "cutoff_cycles_per_pix", "cutoff_cycles_per_mm", "pix_per_mm", "transfer_function", "valid_min", "valid_max"]) -> None: ...

class FocusInfo(Message):
    @property
    def focus(self) -> _Messages[FocusInfoItem]: ...
    def __init__(
        self,
        *,
        focus: Iterable[FocusInfoItem] = ...,
    ) -> None: ...
    def HasField(self, field_name: NoReturn) -> bool: ...
    def ClearField(self, field_name: Literal["focus"]) -> None: ...

class CameraExtrinsics(Message):
    @property
    def a(self) -> _Values[float]: ...
    def __init__(
        self,
        *,
        a: Iterable[float] = ...,
    ) -> None: ...
    def HasField(self, field_name: NoReturn) -> bool: ...
    def ClearField(self, field_name: Literal["a"]) -> None: ...

class CameraCalibration(Message):
    @property
    def intrinsics(self) -> CameraIntrinsics: ...
    @property
    def intrinsics_image(self) -> CalibrationImage: ...
    @property
    def extrinsics(self) -> CameraExtrinsics: ...
    @property
    def extrinsics_image(self) -> CalibrationImage: ...
    name: str
    model: str
    serial: str
    def __init__(
        self,
        *,
        intrinsics: Optional[CameraIntrinsics] = ...,
        intrinsics_image: Optional[CalibrationImage] = ...,
        extrinsics: Optional[CameraExtrinsics] = ...,
        extrinsics_image: Optional[CalibrationImage] = ...,
        name: Optional[str] = ...,
        model: Optional[str] = ...,
        serial: Optional[str] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["intrinsics", "intrinsics_image", "extrinsics", "extrinsics_image", "name", "model", "serial"]) -> bool: ...
    def ClearField(self, field_name: Literal["intrinsics", "intrinsics_image", "extrinsics", "extrinsics_image", "name", "model", "serial"]) -> None: ...

class RobotCalibration(Message):
    @property
    def camera(self) -> _Messages[CameraCalibration]: ...
    def __init__(
        self,
        *,
        camera: Iterable[CameraCalibration] = ...,
    ) -> None: ...
    def HasField(self, field_name: NoReturn) -> bool: ...
    def ClearField(self, field_name: Literal["camera"]) -> None: ...

class CalibrationMetadataProto(Message):
    time: int
    base_serial: str
    audio_serial: str
    temperature: float
    def __init__(
        self,
        *,
        time: Optional[int] = ...,
        base_serial: Optional[str] = ...,
        audio_serial: Optional[str] = ...,
        temperature: Optional[float] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["time", "base_serial", "audio_serial", "temperature"]) -> bool: ...
    def ClearField(self, field_name: Literal["time", "base_serial", "audio_serial", "temperature"]) -> None: ...

class GyroscopeCalibrationProto(Message):
    gyroscope_gain: float
    @property
    def metadata(self) -> CalibrationMetadataProto: ...
    def __init__(
        self,
        *,
        gyroscope_gain: Optional[float] = ...,
        metadata: Optional[CalibrationMetadataProto] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["gyroscope_gain", "metadata"]) -> bool: ...
    def ClearField(self, field_name: Literal["gyroscope_gain", "metadata"]) -> None: ...

class CameraCalibrationAdjustmentProto(Message):
    @property
    def params(self) -> CameraExtrinsics: ...
    @property
    def metadata(self) -> CalibrationMetadataProto: ...
    def __init__(
        self,
        *,
        params: Optional[CameraExtrinsics] = ...,
        metadata: Optional[CalibrationMetadataProto] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["params", "metadata"]) -> bool: ...
    def ClearField(self, field_name: Literal["params", "metadata"]) -> None: ...

class BaseCalibrationProto(Message):
    wheel_base: float
    base_width: float
    @property
    def global_transform(self) -> CameraCalibrationAdjustmentProto: ...
    @property
    def gyroscope_cal(self) -> GyroscopeCalibrationProto: ...
    base_length: float
    def __init__(
        self,
        *,
        wheel_base: Optional[float] = ...,
        base_width: Optional[float] = ...,
        global_transform: Optional[CameraCalibrationAdjustmentProto] = ...,
        gyroscope_cal: Optional[GyroscopeCalibrationProto] = ...,
        base_length: Optional[float] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["wheel_base", "base_width", "base_length", "global_transform", "gyroscope_cal"]) -> bool: ...
    def ClearField(self, field_name: Literal["wheel_base", "base_width", "base_length", "global_transform", "gyroscope_cal"]) -> None: ...

class FocusCheckProto(Message):
    value_at_cutoff: float
    cutoff: float
    @property
    def bins(self) -> _Values[float]: ...
    name: str
    ok: bool
    def __init__(
        self,
        *,
        value_at_cutoff: Optional[float] = ...,
        cutoff: Optional[float] = ...,
        bins: Iterable[float] = ...,
        name: Optional[str] = ...,
        ok: Optional[bool] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["value_at_cutoff", "cutoff", "name", "ok"]) -> bool: ...
    def ClearField(self, field_name: Literal["value_at_cutoff", "cutoff", "bins", "name", "ok"]) -> None: ...

class FocusCheckSetProto(Message):
    @property
    def spots(self) -> _Messages[FocusCheckProto]: ...
    def __init__(
        self,
        *,
        spots: Iterable[FocusCheckProto] = ...,
    ) -> None: ...
    def HasField(self, field_name: NoReturn) -> bool: ...
    def ClearField(self, field_name: Literal["spots"]) -> None: ...

class PTZIntrinsicsItem(Message):
    zoom: float
    fxy: float
    cx: float
    cy: float
    k1: float
    k4: float
    p1: float
    p2: float
    error_per_point: float
    def __init__(
        self,
        *,
        zoom: Optional[float] = ...,
        fxy: Optional[float] = ...,
        cx: Optional[float] = ...,
        cy: Optional[float] = ...,
        k1: Optional[float] = ...,
        k4: Optional[float] = ...,
        p1: Optional[float] = ...,
        p2: Optional[float] = ...,
        error_per_point: Optional[float] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["zoom", "fxy", "cx", "cy", "k1", "k4", "p1", "p2", "error_per_point"]) -> bool: ...
    def ClearField(self, field_name: Literal["zoom", "fxy", "cx", "cy", "k1", "k4", "p1", "p2", "error_per_point"]) -> None: ...

class PTZIntrinsics(Message):
    zx: float
    zy: float
    width: int
    height: int
    @property
    def samples(self) -> _Messages[PTZIntrinsicsItem]: ...
    samples_zoom0: int
    samples_zoom_step: int
    zoom_min: int
    zoom_max: int
    def __init__(
        self,
        *,
        zx: Optional[float] = ...,
        zy: Optional[float] = ...,
        width: Optional[int] = ...,
        height: Optional[int] = ...,
        samples: Iterable[PTZIntrinsicsItem] = ...,
        samples_zoom0: Optional[int] = ...,
        samples_zoom_step: Optional[int] = ...,
        zoom_min: Optional[int] = ...,
        zoom_max: Optional[int] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["zx", "zy", "width", "height", "samples_zoom0", "samples_zoom_step", "zoom_min", "zoom_max"]) -> bool: ...
    def ClearField(self, field_name: Literal["zx", "zy", "width", "height", "samples", "samples_zoom0", "samples_zoom_step", "zoom_min", "zoom_max"]) -> None: ...

class PanTiltSystemParameters(Message):
    @property
    def pan_ext(self) -> CameraExtrinsics: ...
    @property
    def tilt_ext(self) -> CameraExtrinsics: ...
    @property
    def device_ext(self) -> CameraExtrinsics: ...
    rads_per_pan_unit: float
    rads_per_tilt_unit: float
    pan_offset: float
    tilt_offset: float
    pan_min: int
    pan_max: int
    tilt_min: int
    tilt_max: int
    max_pan_speed: int
    max_tilt_speed: int
    avg_model_error: float
    max_model_error: float
    def __init__(
        self,
        *,
        pan_ext: Optional[CameraExtrinsics] = ...,
        tilt_ext: Optional[CameraExtrinsics] = ...,
        device_ext: Optional[CameraExtrinsics] = ...,
        rads_per_pan_unit: Optional[float] = ...,
        rads_per_tilt_unit: Optional[float] = ...,
        pan_offset: Optional[float] = ...,
        tilt_offset: Optional[float] = ...,
        pan_min: Optional[int] = ...,
        pan_max: Optional[int] = ...,
        tilt_min: Optional[int] = ...,
        tilt_max: Optional[int] = ...,
        max_pan_speed: Optional[int] = ...,
        max_tilt_speed: Optional[int] = ...,
        avg_model_error: Optional[float] = ...,
        max_model_error: Optional[float] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["pan_ext", "tilt_ext", "device_ext", "rads_per_pan_unit", "rads_per_tilt_unit", "pan_offset", "tilt_offset", "pan_min", "pan_max", "tilt_min", "tilt_max", "max_pan_speed", "max_tilt_speed", "avg_model_error", "max_model_error"]) -> bool: ...
    def ClearField(self, field_name: Literal["pan_ext", "tilt_ext", "device_ext", "rads_per_pan_unit", "rads_per_tilt_unit", "pan_offset", "tilt_offset", "pan_min", "pan_max", "tilt_min", "tilt_max", "max_pan_speed", "max_tilt_speed", "avg_model_error", "max_model_error"]) -> None: ...

class PTZCameraParameters(Message):
    @property
    def intrinsics(self) -> PTZIntrinsics: ...
    @property
    def pan_tilt(self) -> PanTiltSystemParameters: ...
    def __init__(
        self,
        *,
        intrinsics: Optional[PTZIntrinsics] = ...,
        pan_tilt: Optional[PanTiltSystemParameters] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["intrinsics", "pan_tilt"]) -> bool: ...
    def ClearField(self, field_name: Literal["intrinsics", "pan_tilt"]) -> None: ...

class PTZSystemCalibration(Message):
    @property
    def ptz_camera(self) -> PTZCameraParameters: ...
    @property
    def laser(self) -> PanTiltSystemParameters: ...
    @property
    def other_cameras(self) -> RobotCalibration: ...
    def __init__(
        self,
        *,
        ptz_camera: Optional[PTZCameraParameters] = ...,
        laser: Optional[PanTiltSystemParameters] = ...,
        other_cameras: Optional[RobotCalibration] = ...,
    ) -> None: ...
    def HasField(self, field_name: Literal["ptz_camera", "laser", "other_cameras"]) -> bool: ...
    def ClearField(self, field_name: Literal["ptz_camera", "laser", "other_cameras"]) -> None: ...
