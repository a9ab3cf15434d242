"""The calibration records of a robot, read, written and handed to numpy.

    from calibration_protolib import RobotCalibration, read

    robot = read("robot.RobotCalibration.binpb", RobotCalibration)

The record classes are those of the run-time's Python, made from the schema's descriptor set when
the package is imported (see `records`). Their fields are used as in any protocol buffers class;
the functions here refuse what the C++ library refuses.
"""

from . import records
from .arrays import to_numpy
from .files import read, read_log, write, write_log
from .parsing import RecordError, parse
from .records import *

__all__ = ["RecordError", "parse", "read", "read_log", "to_numpy", "write", "write_log"]
__all__ += records.__all__
