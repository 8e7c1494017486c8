"""The GenTL producer as a consumer that others wrote sees it: Harvesters on the reference implementation of GenICam.

Usage: gentl_consumer.py PRODUCER.cti HOST_PICTURES
HOST_PICTURES is a program that writes the bytes of pictures that it takes through the applet's exports.
"""

import logging
import subprocess
import sys

from genicam import genapi, gentl
from harvesters.core import Harvester

logging.disable(logging.CRITICAL)
WIDTH, HEIGHT, PICTURES = 256, 64, 100
faults = []


def check(condition, what):
    if not condition:
        faults.append(what)


def features(node_map):
    """Every feature of a node map, as its category tree shows it."""
    found, seen = [], set()

    def walk(node):
        for feature in node.features:
            if feature.node.name in seen:
                continue
            seen.add(feature.node.name)
            if feature.node.principal_interface_type == genapi.EInterfaceType.intfICategory:
                walk(feature)
            else:
                found.append(feature)

    walk(node_map.Root)
    return found


def is_event_data(node):
    return node.node.name.startswith("Event") and node.node.name.endswith(("Timestamp", "Payload", "Lost"))


def read(node):
    """The value of a feature; commands have none."""
    kind = node.node.principal_interface_type
    if kind == genapi.EInterfaceType.intfICommand:
        return node.is_done()
    if kind == genapi.EInterfaceType.intfIRegister:
        return node.get(node.length)
    return node.value


NOT_IN_EVERY_MODE = {"AcquisitionFrameCount", "TriggerSoftware"}


def read_all(name, node_map):
    nodes = features(node_map)
    for node in nodes:
        if is_event_data(node):
            continue  # there from the first such event on
        mode = genapi.EAccessMode(node.node.get_access_mode())
        if mode == genapi.EAccessMode.NA and node.node.name in NOT_IN_EVERY_MODE:
            continue
        check(mode in (genapi.EAccessMode.RO, genapi.EAccessMode.RW, genapi.EAccessMode.WO),
              f"{name}: {node.node.name} has the access mode {mode}")
        try:
            read(node)
        except Exception as error:
            check(False, f"{name}: {node.node.name} cannot be read: {error}")
    return nodes


def ends(node):
    """The values at both ends of what a feature claims to take."""
    kind = node.node.principal_interface_type
    if kind == genapi.EInterfaceType.intfIEnumeration:
        names = [entry.symbolic for entry in node.entries]
        return [names[0], names[-1]]
    if kind in (genapi.EInterfaceType.intfIInteger, genapi.EInterfaceType.intfIFloat):
        return [node.min, node.max]
    if kind == genapi.EInterfaceType.intfIBoolean:
        return [True, False]
    return []


# Texts name files; these two act on the board in a way that the next feature would not survive.
LEFT_OUT = {"TLParamsLocked", "EventNotification"}
# What the applet makes of a value may read otherwise: steps, "as it was", a state that only the design decides.
READS_OTHERWISE = {"FG_DIGIO_OUTPUT", "FG_CAMERASIMULATOR_WIDTH", "FG_DEBUGOUTENABLE", "FG_CCSEL0", "FG_CCSEL1",
                   "FG_CCSEL2", "FG_CCSEL3"}


def write_both_ends(name, node_map):
    """Each feature is set to both ends and back; everything stays readable."""
    written = 0
    for node in features(node_map):
        if node.node.name in LEFT_OUT or node.node.get_access_mode() != genapi.EAccessMode.RW:
            continue
        before = read(node)
        for value in ends(node):
            try:
                node.value = value
                written += 1
            except Exception as error:
                check(False, f"{name}: {node.node.name} = {value} is refused: {error}")
                continue
            got = node.value
            close = abs(got - value) <= 1e-6 * abs(value) + 0.01 if isinstance(value, float) else got == value
            commands = len(getattr(node, "entries", [])) == 1
            check(close or commands or node.node.name in READS_OTHERWISE, f"{name}: {node.node.name} = {value} reads back as {got}")
        if ends(node):
            try:
                node.value = before
            except Exception as error:
                check(False, f"{name}: {node.node.name} does not go back to {before}: {error}")
    return written


def every_mode(node_map):
    """What depends on a mode is readable in each."""
    for name in ("FG_IMGTRIGGERMODE", "FG_LINETRIGGERMODE", "FG_CAMERASIMULATOR_SELECT_MODE", "FG_LUT_TYPE",
                 "FG_CAMERASIMULATOR_ENABLE", "TriggerSelector", "LUTSelector", "BalanceRatioSelector"):
        node = node_map.get_node(name)
        before = node.value
        for entry in [entry.symbolic for entry in node.entries]:
            node.value = entry
            read_all(f"{name} = {entry}", node_map)
        node.value = before


def moves(node_map):
    """Ranges, units and what is there follow at once."""
    there = lambda node: node.get_access_mode() in (genapi.EAccessMode.RW, genapi.EAccessMode.WO, genapi.EAccessMode.RO)
    for selector, modes in {"TriggerSelector": ("LineStart", "FrameStart"),
                            "AcquisitionMode": ("MultiFrame", "Continuous")}.items():
        for mode in modes:
            node_map.get_node(selector).value = mode
            frames = node_map.TriggerSelector.value == "FrameStart"
            software = [entry for entry in node_map.TriggerSource.entries if entry.symbolic == "Software"][0]
            check(there(software.node) == there(node_map.TriggerSoftware.node) == frames,
                  f"the software trigger does not follow {selector} = {mode}")
            check(there(node_map.AcquisitionFrameCount.node) == (mode == "MultiFrame"),
                  f"AcquisitionFrameCount does not follow {selector} = {mode}")
    before = node_map.FG_XOFFSET.max
    node_map.Width.value = 2048
    check(node_map.PayloadSize.value == 2048 * node_map.Height.value * 3, "PayloadSize does not follow Width")
    check(node_map.FG_XOFFSET.max == before - 1024 and node_map.OffsetX.max == before - 1024,
          "the range of OffsetX does not follow Width")
    node_map.Width.value = 1024
    node_map.AcquisitionLineRate.value = 10000.0
    check(abs(node_map.FG_LINEPERIODE.value - 100) < 1e-9, "10000 lines each second are not 100 us each")
    check(node_map.ExposureTime.max == 100, "the range of ExposureTime does not follow the line rate")
    node_map.AcquisitionLineRate.value = 5000.0
    node_map.LUTSelector.value = "Green"
    node_map.LUTIndex.value = 7
    node_map.FG_LUT_TYPE.value = "LUT_TYPE_CUSTOM"
    node_map.LUTValue.value = 99
    table = node_map.FG_LUT_VALUE_GREEN.get(1024)
    check(table[28:32] == (99).to_bytes(4, "little"), "LUTValue does not reach the table")
    node_map.FG_LUT_TYPE.value = "LUT_TYPE_PROCESSING"
    try:
        node_map.FG_WIDTH.value = 20000
        check(False, "a width of 20000 is taken")
    except Exception:
        pass


def pictures(acquirer, host):
    """A hundred pictures, byte for byte those that a host takes through the exports."""
    node_map = acquirer.remote_device.node_map
    node_map.Width.value, node_map.Height.value = WIDTH, HEIGHT
    acquirer.device.node_map.BoardClock.value = "AsFastAsPossible"
    taken = subprocess.run([host, str(WIDTH), str(HEIGHT), str(PICTURES)], check=True, capture_output=True).stdout
    size = WIDTH * HEIGHT * 3
    wanted = [taken[i:i + size] for i in range(0, len(taken), size)]
    check(len(wanted) == PICTURES and len(set(wanted)) > 1, "the host took other pictures than asked for")
    acquirer.start()
    times, frames = [], []
    for number in range(PICTURES):
        with acquirer.fetch(timeout=60) as buffer:
            image = buffer.payload.components[0]
            check((image.width, image.height, image.data_format) == (WIDTH, HEIGHT, "BGR8"),
                  f"picture {number} is {image.width} x {image.height} {image.data_format}")
            check(image.data.tobytes() == wanted[number],
                  f"picture {number} is not the host's")
            times.append(buffer.timestamp_ns)
            frames.append(buffer.module.frame_id)
    acquirer.stop()
    check(frames == list(range(PICTURES)), f"frame ids are {frames[:5]} ...")
    steps = {after - before for before, after in zip(times, times[1:])}
    check(all(abs(step - HEIGHT * 200_000) < 1000 for step in steps), f"pictures are {steps} ns apart")
    acquirer.device.node_map.BoardClock.value = "RealTime"


def follow_an_event(acquirer):
    """An edge at an input arrives as an event and is read through the event's own features."""
    node_map, board = acquirer.remote_device.node_map, acquirer.device.node_map
    node_map.EventSelector.value = "Line3RisingEdge"
    node_map.EventNotification.value = "On"
    token = acquirer.device.module.register_event(gentl.EVENT_TYPE_LIST.EVENT_REMOTE_DEVICE) \
        if not acquirer._module_event_monitor_dict.get(acquirer.remote_device) else None
    monitor = gentl.EventManagerRemoteDevice(token) if token is not None \
        else acquirer._module_event_monitor_dict[acquirer.remote_device]
    board.BoardInputSelector.value = 3
    board.BoardInputLevel.value = True
    acquirer.device.node_map.BoardInputLevel.value = False
    monitor.update_event_data(5000)
    adapter = genapi.EventAdapterGeneric(node_map.pointer)
    adapter.deliver_message(monitor.optional_data, monitor.event_id)
    check(int(str(monitor.event_id), 16) == node_map.EventLine3RisingEdge.value,
          f"the event came with the number {monitor.event_id}")
    check(node_map.EventLine3RisingEdgePayload.value == 1, "the event's payload is not the level")
    check(node_map.EventLine3RisingEdgeTimestamp.value > 0, "the event has no time")
    node_map.EventNotification.value = "Off"


def main(producer, host):
    harvester = Harvester()
    harvester.add_file(producer)
    harvester.update()
    check(len(harvester.device_info_list) == 1, f"{len(harvester.device_info_list)} devices are listed")
    acquirer = harvester.create(0)
    node_map = acquirer.remote_device.node_map
    modules = {"system": acquirer.system, "interface": acquirer.interface, "device": acquirer.device,
               "stream": acquirer.data_streams[0], "remote device": acquirer.remote_device}
    count = {name: len(read_all(name, module.node_map)) for name, module in modules.items()}
    check(count["remote device"] >= 164 + 40, f"the remote device has only {count['remote device']} features")
    written = sum(write_both_ends(name, module.node_map) for name, module in modules.items())
    every_mode(node_map)
    moves(node_map)
    for step in (lambda: pictures(acquirer, host), lambda: follow_an_event(acquirer)):
        try:
            step()
        except Exception as error:
            check(False, f"{type(error).__name__}: {error}")
    acquirer.destroy()
    harvester.reset()
    for fault in faults:
        print("FAILED:", fault)
    print(f"{count}, {written} values written")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
