# Made by "./quill stubs" from the built module; a test holds it against the module.
"""Scripting of in-vehicle bus interface boxes: CAN, CAN FD, LIN, Ethernet, FlexRay.

Life cycle: load, exit.
Boxes: getDeviceList gives a DeviceHandle per box; getDeviceConfig, setDeviceConfig,
    getChannelNames.
Receiving: subscribeCanFrame, subscribeLinFrame, subscribeEthFrame, subscribeCanFrameById, with
    lists of frames subscribeCanFrames and subscribeLinFrames, and the unsubscribe calls; records
    are CANRawFrame, LinFrame, EthFrame. getCounters tells where the frames are.
Sending: sendCanFrame, sendCanFDFrame; cyclically with startCyclicCanFrame and its relatives;
    startLinScheduleTable. FrameUpdate adds a rolling counter and a CRC (CrcType).
Recording: enableDataRecording, disableDataRecording, getRecordingStatus.
Databases: loadCanDBC, loadCanArxml, loadLinLDF; findFrame, decodeFrame and the signal calls.
Filters: CANFrameFilterList, LINFrameFilterList; attachDatabase names received frames.

    import QuillScriptsSDK as sdk

    sdk.load()
    box = sdk.getDeviceList(sdk.DeviceType.All, 3000)[0]
    sdk.subscribeCanFrame(box, print)
    sdk.sendCanFrame(box, sdk.CANRawFrame(id=0x123, data=[1, 2, 3]))
    sdk.exit()

Channels count from 0, times are ns since the epoch on the clock of the box, payloads read as lists
of ints 0 to 255. Records are plain values that can be copied; frames, settings and schedule tables
can be made with keywords. A value out of its range raises ValueError, a wrong kind TypeError. Calls
that wait release the interpreter lock. Without a box on the network, a virtual one answers.
"""

from collections.abc import Callable, Sequence
from typing import ClassVar, overload

__build_time__: str
__version__: str

class ErrorCode:
    """First element of the result pairs of database queries, which hold it as an int."""
    Success: ClassVar[ErrorCode]
    """0: Done."""
    InvalidParam: ClassVar[ErrorCode]
    """1: The file cannot be loaded."""
    __members__: ClassVar[dict[str, ErrorCode]]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __init__(self, value: int) -> None: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...
    def __eq__(self, other: object) -> bool: ...
    def __ne__(self, other: object) -> bool: ...
    def __invert__(self) -> int: ...
    def __lt__(self, other: ErrorCode | int) -> bool: ...
    def __le__(self, other: ErrorCode | int) -> bool: ...
    def __gt__(self, other: ErrorCode | int) -> bool: ...
    def __ge__(self, other: ErrorCode | int) -> bool: ...
    def __and__(self, other: ErrorCode | int) -> int: ...
    def __rand__(self, other: ErrorCode | int) -> int: ...
    def __or__(self, other: ErrorCode | int) -> int: ...
    def __ror__(self, other: ErrorCode | int) -> int: ...
    def __xor__(self, other: ErrorCode | int) -> int: ...
    def __rxor__(self, other: ErrorCode | int) -> int: ...

class CANFrameExtend:
    """Flag word of a CAN frame."""
    EDL: int
    """1: CAN FD frame, 0: classic."""
    BRS: int
    """Bit-rate switch (CAN FD)."""
    ESI: int
    """Error-state indicator (CAN FD)."""
    COD: int
    """Code field, 0 to 15, carried unchanged."""
    UU2: int
    """Spare flag, carried unchanged."""
    SRR: int
    """Substitute remote request."""
    IDE: int
    """1: 29-bit identifier, 0: 11-bit."""
    RTR: int
    """Remote transmission request."""
    DLC: int
    """Data length code, 0 to 15."""
    errorFlag: int
    """Error flags of the box, 16 bits; 0 for a good frame."""
    def __init__(
        self,
        *,
        EDL: int = ...,
        BRS: int = ...,
        ESI: int = ...,
        COD: int = ...,
        UU2: int = ...,
        SRR: int = ...,
        IDE: int = ...,
        RTR: int = ...,
        DLC: int = ...,
        errorFlag: int = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> CANFrameExtend: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CANFrameExtend: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class CANRawFrame:
    """One CAN or CAN FD frame. Made with keywords: CANRawFrame(id=0x123, data=[1, 2])."""
    id: int
    """CAN identifier: 11 bits, or 29 bits when IDE is 1."""
    channelId: int
    """CAN channel of the box, counted from 0."""
    name: str
    """Name of the matched database frame, empty when there is none."""
    timestamp: int
    """Time of the frame in ns since the epoch, by the clock of the box."""
    DLC: int
    """Data length code, 0 to 15. Left at 0, the data gives it when the frame is sent."""
    BRS: int
    """Bit-rate switch (CAN FD), 0 or 1."""
    IDE: int
    """1: 29-bit identifier, 0: 11-bit."""
    EDL: int
    """1: CAN FD frame, 0: classic."""
    @property
    def data(self) -> list[int]:
        """Payload, a list of ints; up to 64 bytes. Takes bytes, bytearray or a list of ints."""
    @data.setter
    def data(self, value: bytes | bytearray | list[int]) -> None: ...
    ESI: int
    """Error-state indicator (CAN FD), 0 or 1."""
    RTR: int
    """1: remote frame."""
    errorFlag: int
    """Error flags of the box, 16 bits; 0 for a good frame."""
    extend: CANFrameExtend
    """The whole flag word; changing it changes the frame."""
    dir: int
    """Direction: 0 received, 1 sent by the box itself."""
    def __init__(
        self,
        *,
        id: int = ...,
        channelId: int = ...,
        name: str = ...,
        timestamp: int = ...,
        DLC: int = ...,
        BRS: int = ...,
        IDE: int = ...,
        EDL: int = ...,
        data: bytes | bytearray | list[int] = ...,
        ESI: int = ...,
        RTR: int = ...,
        errorFlag: int = ...,
        extend: CANFrameExtend = ...,
        dir: int = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> CANRawFrame: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CANRawFrame: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class LinFrame:
    """One LIN frame. Made with keywords: LinFrame(id=0x12, data=[1, 2])."""
    id: int
    """LIN identifier, 0 to 63 on a bus."""
    dir: int
    """Direction as the box reports it: 0 received, 1 sent by the box itself."""
    channelId: int
    """LIN channel of the box, counted from 0."""
    checkMode: int
    """Checksum model: 0 classic, 1 enhanced."""
    timestamp: int
    """Time of the frame in ns since the epoch, by the clock of the box."""
    @property
    def data(self) -> list[int]:
        """Payload, a list of ints; up to 64 bytes. Takes bytes, bytearray or a list of ints."""
    @data.setter
    def data(self, value: bytes | bytearray | list[int]) -> None: ...
    checksum: int
    """Checksum as received, 16 bits."""
    def __init__(
        self,
        *,
        id: int = ...,
        dir: int = ...,
        channelId: int = ...,
        checkMode: int = ...,
        timestamp: int = ...,
        data: bytes | bytearray | list[int] = ...,
        checksum: int = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> LinFrame: ...
    def __deepcopy__(self, memo: dict[int, object]) -> LinFrame: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class EthFrame:
    """One Ethernet frame. Its text form tells time, channel, direction, length and bytes."""
    def __init__(self) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> EthFrame: ...
    def __deepcopy__(self, memo: dict[int, object]) -> EthFrame: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class CanDBCEntrySignal:
    """One signal of a DBC frame. See decodeSignalPhysical and encodeSignalPhysical."""
    name: str
    """Name, unique within its frame."""
    comment: str
    """Comment of the file."""
    unit: str
    """Unit of the physical value."""
    initValue: float
    """Raw value that the frame starts with; 0 when the file gives none."""
    offset: float
    """Physical value = raw value x factor + offset."""
    startBit: int
    """8 x byte + bit of the least significant bit, for both byte orders."""
    bitLength: int
    """Number of bits, 1 to 64."""
    isBigEndian: bool
    """True: Motorola byte order, False: Intel."""
    isSigned: bool
    """True: the raw value is in two's complement."""
    isFloat: bool
    """True: the raw bits are an IEEE 754 number of 32 or 64 bits."""
    valMax: float
    """Upper physical limit; both limits 0: none given."""
    valMin: float
    """Lower physical limit; both limits 0: none given."""
    factor: float
    """Physical value = raw value x factor + offset."""
    transmitters: list[str]
    """Nodes that send the frame."""
    mapValueTable: dict[float, str]
    """Texts of raw values: {raw value as a float: text}."""
    receivers: list[str]
    """Nodes that receive the signal."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CanDBCEntrySignal: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanDBCEntrySignal: ...

class CanDBCEntry:
    """One frame of a DBC database. See decodeFrame."""
    id: int
    """CAN identifier, 11 or 29 bits, see isExtended."""
    dlc: int
    """Length in bytes."""
    name: str
    """Name of the frame."""
    comment: str
    """Comment of the file."""
    isExtended: bool
    """True: 29-bit identifier, False: 11-bit."""
    isFD: bool
    """True: CAN FD frame."""
    cycleTime: int
    """Cycle time in ms; 0 when the frame is not cyclic."""
    transmitters: list[str]
    """Nodes that send the frame."""
    signals: list[CanDBCEntrySignal]
    """Signals, in the order of the file."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CanDBCEntry: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanDBCEntry: ...

class CanDbcDatabase:
    """Content of a DBC file. See loadCanDBC and findFrame."""
    dbcEntrys: list[CanDBCEntry]
    """The frames, in the order of the file."""
    nodes: list[str]
    """Names of the nodes."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CanDbcDatabase: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanDbcDatabase: ...

class CanArxmlEntrySignal:
    """One signal of a PDU. See decodeSignalPhysical and encodeSignalPhysical."""
    name: str
    """Name, unique within its frame."""
    comment: str
    """Comment of the file."""
    unit: str
    """Unit of the physical value."""
    initValue: float
    """Raw value that the signal starts with; 0 when the file gives none."""
    offset: float
    """Physical value = raw value x factor + offset."""
    startBit: int
    """8 x byte + bit of the least significant bit, for both byte orders."""
    bitLength: int
    """Number of bits, 1 to 64."""
    isBigEndian: bool
    """True: Motorola byte order, False: Intel."""
    valMax: float
    """Upper physical limit; both limits 0: none given."""
    valMin: float
    """Lower physical limit; both limits 0: none given."""
    factor: float
    """Physical value = raw value x factor + offset."""
    mapValueTable: dict[float, str]
    """Texts of raw values: {raw value as a float: text}."""
    isSigned: bool
    """True: the raw value is in two's complement."""
    isFloat: bool
    """True: the raw bits are an IEEE 754 number of 32 or 64 bits."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CanArxmlEntrySignal: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanArxmlEntrySignal: ...

class CanFdPdu:
    """One PDU; containers carry PDUs of their own."""
    id: int
    """Header id of a contained PDU, else 0."""
    name: str
    """Name of the PDU."""
    comment: str
    """Comment of the file."""
    pdutype: str
    """Kind, such as "I-SIGNAL-I-PDU"."""
    header_type: int
    """1 no header, 2 short header, 3 long header, 0 not given."""
    startPosition: int
    """Bit position in the frame."""
    length: int
    """Length in bytes."""
    receivers: list[str]
    """Nodes that receive the PDU."""
    senders: list[str]
    """Nodes that send the PDU."""
    pdus: list[CanFdPdu]
    """PDUs of a container, parts of a multiplexed PDU."""
    signals: list[CanArxmlEntrySignal]
    """Signals, in the order of the file."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CanFdPdu: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanFdPdu: ...

class CanFdDBCEntry:
    """One frame of an ARXML database. See decodeFrame."""
    id: int
    """CAN identifier, 11 or 29 bits, see isExtended."""
    dlc: int
    """Length in bytes."""
    name: str
    """Name of the frame."""
    comment: str
    """Comment of the file."""
    isExtended: bool
    """True: 29-bit identifier, False: 11-bit."""
    isFD: bool
    """True: CAN FD frame."""
    receivers: list[str]
    """Nodes that receive the frame."""
    senders: list[str]
    """Nodes that send the frame."""
    cycleTime: int
    """Shortest cycle time of its PDUs in ms; 0 when none is cyclic."""
    pdus: list[CanFdPdu]
    """PDUs that the frame carries."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CanFdDBCEntry: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanFdDBCEntry: ...

class CANFDPhyChannel:
    """One physical channel of a cluster."""
    name: str
    """Name of the channel."""
    entrys: list[CanFdDBCEntry]
    """The frames that are sent on it."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CANFDPhyChannel: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CANFDPhyChannel: ...

class CanFdCluster:
    """One CAN bus."""
    name: str
    """Name of the cluster."""
    protocol: str
    """Name of the protocol."""
    signature: str
    """Version of the protocol."""
    baudRate: int
    """Arbitration bit rate in bit/s."""
    fdBaudRate: int
    """Bit rate of the data phase in bit/s; 0: no CAN FD."""
    channels: list[CANFDPhyChannel]
    """Physical channels."""
    dbcEntrys: list[CanFdDBCEntry]
    """All frames, in the order of the file."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CanFdCluster: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanFdCluster: ...

class CanArxmlDatabase:
    """Content of an ARXML file. See loadCanArxml and findFrame."""
    clusters: list[CanFdCluster]
    """The CAN buses."""
    cluster: CanFdCluster
    """The first cluster; an empty one when there is none."""
    def __init__(self) -> None: ...
    def __copy__(self) -> CanArxmlDatabase: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanArxmlDatabase: ...

class LinSignal:
    """One signal of a LIN frame. See decodeSignalPhysical and encodeSignalPhysical."""
    name: str
    """Name, unique within its frame."""
    bitLength: int
    """Number of bits, 1 to 64."""
    isBigEndian: bool
    """True: Motorola byte order, False: Intel."""
    isSigned: bool
    """True: the raw value is in two's complement."""
    startBit: int
    """8 x byte + bit of the least significant bit, for both byte orders."""
    initValue: int
    """Raw value that the signal starts with; 0 when the file gives none."""
    valMin: int
    """Smallest raw value of the physical range; 0 without one."""
    valMax: int
    """Largest raw value of the physical range; 0 without one."""
    factor: float
    """Physical value = raw value x factor + offset."""
    offset: float
    """Physical value = raw value x factor + offset."""
    hasFactor: bool
    """True: the file gives a physical range; else factor is 1 and offset and limits are 0."""
    unit: str
    """Unit of the physical value."""
    subscribers: list[str]
    """Nodes that receive the signal."""
    mapValueTable: dict[float, str]
    """Texts of raw values: {raw value as a float: text}."""
    def __init__(self) -> None: ...
    def __copy__(self) -> LinSignal: ...
    def __deepcopy__(self, memo: dict[int, object]) -> LinSignal: ...

class LDFFrame:
    """One frame of an LDF database. See decodeFrame."""
    id: int
    """LIN identifier, 0 to 63, without parity bits."""
    name: str
    """Name of the frame."""
    length: int
    """Length in bytes."""
    signals: list[LinSignal]
    """Signals, in the order of the file."""
    def __init__(self) -> None: ...
    def __copy__(self) -> LDFFrame: ...
    def __deepcopy__(self, memo: dict[int, object]) -> LDFFrame: ...

class LinLdfDatabaseItem:
    """Content of an LDF file. See loadLinLDF and findFrame."""
    schedule_tables: list[LinScheduleTable]
    """Schedule tables, ready to be started; their channel is 0."""
    frame: list[LDFFrame]
    """The frames, in the order of the file."""
    def __init__(self) -> None: ...
    def __copy__(self) -> LinLdfDatabaseItem: ...
    def __deepcopy__(self, memo: dict[int, object]) -> LinLdfDatabaseItem: ...

class LinMessage:
    """A LIN frame with the database frame that it carries. See toLinMessage."""
    timestamp: int
    """Time of the frame in ns since the epoch, by the clock of the box."""
    id: int
    """LIN identifier, 0 to 63."""
    dir: int
    """Direction: 0 received, 1 sent by the box itself."""
    channel: int
    """LIN channel of the box, counted from 0."""
    data: list[int]
    """Payload, a list of ints."""
    frame: LDFFrame | None
    """An LDFFrame, or None when none is known."""
    def __init__(self) -> None: ...
    def __copy__(self) -> LinMessage: ...
    def __deepcopy__(self, memo: dict[int, object]) -> LinMessage: ...

class ScheduleTableSlot:
    """One slot of a LIN schedule table. Made with keywords."""
    @property
    def debug_str(self) -> str:
        """All fields as text, one a line."""
    id: int
    """LIN identifier, 0 to 63 on a bus."""
    time_interval: int
    """Duration of the slot in ms."""
    msg_type: int
    """4: the master publishes, 3: a slave publishes."""
    check_type: int
    """Checksum model: 0 classic, 1 enhanced."""
    @property
    def data(self) -> list[int]:
        """Payload, a list of ints; up to 8 bytes."""
    @data.setter
    def data(self, value: bytes | bytearray | list[int]) -> None: ...
    sync: int
    """Carried unchanged."""
    publisher: str
    """Name of the publishing node."""
    subscribers: list[str]
    """Names of the receiving nodes."""
    name: str
    """Frame name."""
    def __init__(
        self,
        *,
        id: int = ...,
        time_interval: int = ...,
        msg_type: int = ...,
        check_type: int = ...,
        data: bytes | bytearray | list[int] = ...,
        sync: int = ...,
        publisher: str = ...,
        subscribers: list[str] = ...,
        name: str = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> ScheduleTableSlot: ...
    def __deepcopy__(self, memo: dict[int, object]) -> ScheduleTableSlot: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class LinScheduleTable:
    """A LIN schedule table for one channel. See startLinScheduleTable."""
    channel_id: int
    """LIN channel of the box, counted from 0."""
    @property
    def debug_str(self) -> str:
        """All fields as text, one a line."""
    name: str
    """Name of the table."""
    def __init__(self, *, channel_id: int = ..., name: str = ...) -> None: ...
    def add_slot(self, slot: ScheduleTableSlot) -> None:
        """Append a copy of a slot."""
    def slot_array_size(self) -> int:
        """Number of slots."""
    def slot_array(self) -> list[ScheduleTableSlot]:
        """The slots, a list of copies."""
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> LinScheduleTable: ...
    def __deepcopy__(self, memo: dict[int, object]) -> LinScheduleTable: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class CrcType:
    """CRC algorithms of a FrameUpdate; the values are their codes."""
    CRC_NONE: ClassVar[CrcType]
    """0"""
    CRC4_ITU: ClassVar[CrcType]
    """1"""
    CRC8: ClassVar[CrcType]
    """2"""
    CRC8_VARIANT: ClassVar[CrcType]
    """3"""
    CRC8_SAE_J1850: ClassVar[CrcType]
    """4"""
    CRC8_SAE_J1850_ZERO: ClassVar[CrcType]
    """5"""
    CRC8_H2F: ClassVar[CrcType]
    """6"""
    CRC8_ITU: ClassVar[CrcType]
    """7"""
    CRC8_ROHC: ClassVar[CrcType]
    """8"""
    CRC8_EBU: ClassVar[CrcType]
    """9"""
    CRC8_HDLC: ClassVar[CrcType]
    """10"""
    CRC8_MAXIM: ClassVar[CrcType]
    """11"""
    CRC8_WCDMA: ClassVar[CrcType]
    """12"""
    CRC8_LTE: ClassVar[CrcType]
    """13"""
    CRC16_ARC: ClassVar[CrcType]
    """14"""
    CRC16_BUYPASS: ClassVar[CrcType]
    """15"""
    CRC16_CCITTFALSE: ClassVar[CrcType]
    """16"""
    CRC16_MCRF4XX: ClassVar[CrcType]
    """17"""
    CRC16_CDMA2000: ClassVar[CrcType]
    """18"""
    CRC16_CMS: ClassVar[CrcType]
    """19"""
    CRC16_DECTR: ClassVar[CrcType]
    """20"""
    CRC16_DECTX: ClassVar[CrcType]
    """21"""
    CRC16_DNP: ClassVar[CrcType]
    """22"""
    CRC16_GENIBUS: ClassVar[CrcType]
    """23"""
    CRC16_KERMIT: ClassVar[CrcType]
    """24"""
    CRC16_MAXIM: ClassVar[CrcType]
    """25"""
    CRC16_MODBUS: ClassVar[CrcType]
    """26"""
    CRC16_T10DIF: ClassVar[CrcType]
    """27"""
    CRC16_USB: ClassVar[CrcType]
    """28"""
    CRC16_X25: ClassVar[CrcType]
    """29"""
    CRC16_XMODEM: ClassVar[CrcType]
    """30"""
    CRC32: ClassVar[CrcType]
    """31"""
    CRC32_P4: ClassVar[CrcType]
    """32"""
    CRC32_BZIP2: ClassVar[CrcType]
    """33"""
    CRC32_C: ClassVar[CrcType]
    """34"""
    CRC32_MPEG2: ClassVar[CrcType]
    """35"""
    CRC32_POSIX: ClassVar[CrcType]
    """36"""
    CRC32_Q: ClassVar[CrcType]
    """37"""
    CRC64: ClassVar[CrcType]
    """38"""
    CRC64_ECMA: ClassVar[CrcType]
    """39"""
    CRC64_ISO: ClassVar[CrcType]
    """40"""
    __members__: ClassVar[dict[str, CrcType]]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __init__(self, value: int) -> None: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...
    def __eq__(self, other: object) -> bool: ...
    def __ne__(self, other: object) -> bool: ...
    def __invert__(self) -> int: ...
    def __lt__(self, other: CrcType | int) -> bool: ...
    def __le__(self, other: CrcType | int) -> bool: ...
    def __gt__(self, other: CrcType | int) -> bool: ...
    def __ge__(self, other: CrcType | int) -> bool: ...
    def __and__(self, other: CrcType | int) -> int: ...
    def __rand__(self, other: CrcType | int) -> int: ...
    def __or__(self, other: CrcType | int) -> int: ...
    def __ror__(self, other: CrcType | int) -> int: ...
    def __xor__(self, other: CrcType | int) -> int: ...
    def __rxor__(self, other: CrcType | int) -> int: ...

class CANFrameFilterItem:
    """One entry of a CANFrameFilterList."""
    isRange: bool
    """True: the entry is a range of identifiers."""
    extended: int
    """1: 29-bit identifiers, 0: 11-bit."""
    id: int
    """Identifier of an entry that is no range."""
    idRangeStart: int
    """First identifier of a range."""
    idRangeEnd: int
    """Last identifier of a range, which belongs to it."""
    dir: int
    """Direction: 0 received, 1 sent by the box itself."""
    channelId: int
    """Channel of the box, counted from 0."""
    name: str
    """Frame name of an entry by name, else empty."""
    def __init__(self) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> CANFrameFilterItem: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CANFrameFilterItem: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class LINFrameFilterItem:
    """One entry of a LINFrameFilterList."""
    isRange: bool
    """True: the entry is a range of identifiers."""
    id: int
    """Identifier of an entry that is no range."""
    idRangeStart: int
    """First identifier of a range."""
    idRangeEnd: int
    """Last identifier of a range, which belongs to it."""
    dir: int
    """Direction: 0 received, 1 sent by the box itself."""
    channelId: int
    """Channel of the box, counted from 0."""
    name: str
    """Frame name of an entry by name, else empty."""
    def __init__(self) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> LINFrameFilterItem: ...
    def __deepcopy__(self, memo: dict[int, object]) -> LINFrameFilterItem: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class CANFrameFilterList:
    """Pass and block entries for CAN and CAN FD frames.

    A frame that a block entry matches is stopped; any other passes when there are no pass entries or
    when one matches it. Every addition answers True, or False after telling the reason on standard
    output; a refused entry changes nothing.

    Arguments of the additions:
        id, idStart, idEnd: 0 to 0x7FF, or 0 to 0x1FFFFFFF with extended 1.
        extended: 1 for 29-bit identifiers, else 0.
        dir: 0 received, 1 sent by the box itself.
        name: frame name as an attached database gives it, see attachDatabase.
        channel_id: name of a CAN channel, see getChannelNames.
    """
    @property
    def pass_items(self) -> list[CANFrameFilterItem]:
        """Copies of the pass entries."""
    @property
    def block_items(self) -> list[CANFrameFilterItem]:
        """Copies of the block entries."""
    def __init__(self) -> None: ...
    def add_pass_list(self, id: int, extended: int, dir: int, channel_id: str) -> bool:
        """Pass frames with one identifier."""
    def add_block_list(self, id: int, extended: int, dir: int, channel_id: str) -> bool:
        """Block frames with one identifier."""
    def add_name_pass_list(self, name: str, dir: int, channel_id: str) -> bool:
        """Pass frames with a name."""
    def add_name_block_list(self, name: str, dir: int, channel_id: str) -> bool:
        """Block frames with a name."""
    def add_pass_range_list(
        self,
        idStart: int,
        idEnd: int,
        extended: int,
        dir: int,
        channel_id: str,
    ) -> bool:
        """Pass a range of identifiers; both bounds belong to it."""
    def add_block_range_list(
        self,
        idStart: int,
        idEnd: int,
        extended: int,
        dir: int,
        channel_id: str,
    ) -> bool:
        """Block a range of identifiers; both bounds belong to it."""
    def add_pass_channel(self, channel_id: str) -> bool:
        """Pass a whole channel, both directions."""
    def add_block_channel(self, channel_id: str) -> bool:
        """Block a whole channel, both directions."""
    def clear(self) -> None:
        """Drop all entries."""

class LINFrameFilterList:
    """Pass and block entries for LIN frames.

    What passes and what the additions answer is as for a CANFrameFilterList.

    Arguments of the additions:
        id, idStart, idEnd: 0 to 63.
        dir: 0 received, 1 sent by the box itself.
        name: frame name as an attached database gives it, see attachDatabase.
        channel_id: name of a LIN channel, see getChannelNames.
    """
    @property
    def pass_items(self) -> list[LINFrameFilterItem]:
        """Copies of the pass entries."""
    @property
    def block_items(self) -> list[LINFrameFilterItem]:
        """Copies of the block entries."""
    def __init__(self) -> None: ...
    def add_pass_list(self, id: int, dir: int, channel_id: str) -> bool:
        """Pass frames with one identifier."""
    def add_block_list(self, id: int, dir: int, channel_id: str) -> bool:
        """Block frames with one identifier."""
    def add_name_pass_list(self, name: str, dir: int, channel_id: str) -> bool:
        """Pass frames with a name."""
    def add_name_block_list(self, name: str, dir: int, channel_id: str) -> bool:
        """Block frames with a name."""
    def add_pass_range_list(self, idStart: int, idEnd: int, dir: int, channel_id: str) -> bool:
        """Pass a range of identifiers; both bounds belong to it."""
    def add_block_range_list(self, idStart: int, idEnd: int, dir: int, channel_id: str) -> bool:
        """Block a range of identifiers; both bounds belong to it."""
    def add_pass_channel(self, channel_id: str) -> bool:
        """Pass a whole channel, both directions."""
    def add_block_channel(self, channel_id: str) -> bool:
        """Block a whole channel, both directions."""
    def clear(self) -> None:
        """Drop all entries."""

class DeviceType:
    """Kind of box."""
    All: ClassVar[DeviceType]
    """0: Every box."""
    RV_Hub4e: ClassVar[DeviceType]
    """0: The one box model, so the same as All."""
    __members__: ClassVar[dict[str, DeviceType]]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __init__(self, value: int) -> None: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...
    def __eq__(self, other: object) -> bool: ...
    def __ne__(self, other: object) -> bool: ...
    def __invert__(self) -> int: ...
    def __lt__(self, other: DeviceType | int) -> bool: ...
    def __le__(self, other: DeviceType | int) -> bool: ...
    def __gt__(self, other: DeviceType | int) -> bool: ...
    def __ge__(self, other: DeviceType | int) -> bool: ...
    def __and__(self, other: DeviceType | int) -> int: ...
    def __rand__(self, other: DeviceType | int) -> int: ...
    def __or__(self, other: DeviceType | int) -> int: ...
    def __ror__(self, other: DeviceType | int) -> int: ...
    def __xor__(self, other: DeviceType | int) -> int: ...
    def __rxor__(self, other: DeviceType | int) -> int: ...

class DipData:
    """State of a box's DIP switches."""
    program: int
    """Program switch, 0 to 255."""
    sel2: int
    """Selection switch 2, 0 to 255."""
    sel1: int
    """Selection switch 1, 0 to 255."""
    sel0: int
    """Selection switch 0, 0 to 255."""
    def __init__(
        self,
        *,
        program: int = ...,
        sel2: int = ...,
        sel1: int = ...,
        sel0: int = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> DipData: ...
    def __deepcopy__(self, memo: dict[int, object]) -> DipData: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class RVBoxDeviceInfo:
    """Identity of one box."""
    com: int
    """Number as the box reports it."""
    mac: str
    """MAC address, which calls find the box by: six pairs of hexadecimal digits separated by
    colons or hyphens.
    """
    model: str
    """Name of the model."""
    networkCard: str
    """Host network interface through which the box was found."""
    sn: str
    """Serial number."""
    dip: DipData
    """State of the DIP switches."""
    def __init__(
        self,
        *,
        com: int = ...,
        mac: str = ...,
        model: str = ...,
        networkCard: str = ...,
        sn: str = ...,
        dip: DipData = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> RVBoxDeviceInfo: ...
    def __deepcopy__(self, memo: dict[int, object]) -> RVBoxDeviceInfo: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class CanChannelConfig:
    """Settings of one CAN channel."""
    channel: int
    """Channel of the box, counted from 0."""
    enabled: bool
    """True: the channel takes part in traffic."""
    fd: bool
    """True: CAN FD frames are allowed."""
    bitrate: int
    """Arbitration bit rate, 10000 to 1000000 bit/s."""
    dataBitrate: int
    """Data bit rate, 10000 to 10000000 bit/s."""
    samplePoint: float
    """Sample point of the arbitration phase, 50 to 95 percent."""
    dataSamplePoint: float
    """Sample point of the data phase, 50 to 95 percent."""
    termination: bool
    """True: the 120 ohm resistor is switched in."""
    listenOnly: bool
    """True: the channel neither sends nor acknowledges."""
    def __init__(
        self,
        *,
        channel: int = ...,
        enabled: bool = ...,
        fd: bool = ...,
        bitrate: int = ...,
        dataBitrate: int = ...,
        samplePoint: float = ...,
        dataSamplePoint: float = ...,
        termination: bool = ...,
        listenOnly: bool = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> CanChannelConfig: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CanChannelConfig: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class LinChannelConfig:
    """Settings of one LIN channel."""
    channel: int
    """Channel of the box, counted from 0."""
    enabled: bool
    """True: the channel takes part in traffic."""
    baudrate: int
    """Baud rate, 1000 to 20000 bit/s."""
    master: bool
    """True: master, False: slave."""
    version: int
    """Protocol version times ten: 13, 20, 21 or 22."""
    def __init__(
        self,
        *,
        channel: int = ...,
        enabled: bool = ...,
        baudrate: int = ...,
        master: bool = ...,
        version: int = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> LinChannelConfig: ...
    def __deepcopy__(self, memo: dict[int, object]) -> LinChannelConfig: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class EthChannelConfig:
    """Settings of one Ethernet channel."""
    channel: int
    """Channel of the box, counted from 0."""
    enabled: bool
    """True: the channel takes part in traffic."""
    speed: int
    """Speed in Mbit/s: 100 or 1000."""
    master: bool
    """True: master, False: slave."""
    def __init__(
        self,
        *,
        channel: int = ...,
        enabled: bool = ...,
        speed: int = ...,
        master: bool = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> EthChannelConfig: ...
    def __deepcopy__(self, memo: dict[int, object]) -> EthChannelConfig: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class BoxConfig:
    """Settings of a box's channels, by kind. See setDeviceConfig."""
    @property
    def can(self) -> tuple[CanChannelConfig, ...]:
        """Settings of the CAN channels; change elements, or set the whole."""
    @can.setter
    def can(self, value: Sequence[CanChannelConfig]) -> None: ...
    @property
    def lin(self) -> tuple[LinChannelConfig, ...]:
        """Settings of the LIN channels; change elements, or set the whole."""
    @lin.setter
    def lin(self, value: Sequence[LinChannelConfig]) -> None: ...
    @property
    def eth(self) -> tuple[EthChannelConfig, ...]:
        """Settings of the Ethernet channels; change elements, or set the whole."""
    @eth.setter
    def eth(self, value: Sequence[EthChannelConfig]) -> None: ...
    def __init__(
        self,
        *,
        can: Sequence[CanChannelConfig] = ...,
        lin: Sequence[LinChannelConfig] = ...,
        eth: Sequence[EthChannelConfig] = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> BoxConfig: ...
    def __deepcopy__(self, memo: dict[int, object]) -> BoxConfig: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class DeviceHandle:
    """One box. A plain value: calls find the box by deviceInfo.mac."""
    type: DeviceType
    """Kind of box."""
    deviceInfo: RVBoxDeviceInfo
    """Identity of the box."""
    config: BoxConfig
    """Settings of its channels."""
    def __init__(
        self,
        *,
        type: DeviceType = ...,
        deviceInfo: RVBoxDeviceInfo = ...,
        config: BoxConfig = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> DeviceHandle: ...
    def __deepcopy__(self, memo: dict[int, object]) -> DeviceHandle: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class FrameUpdate:
    """Rolling counter and CRC that are brought up to date before every transmission."""
    counterEnabled: bool
    """True: the frame carries a rolling counter."""
    counterStartBit: int
    """8 x byte + bit of the least significant bit, 0 to 511, for both byte orders."""
    counterLength: int
    """Number of bits, 0 to 64."""
    counterBigEndian: bool
    """True: Motorola byte order."""
    counterReset: bool
    """True: the first transmission carries 0, else 1."""
    @property
    def crcType(self) -> int:
        """A CrcType or its code, 0 for none."""
    @crcType.setter
    def crcType(self, value: CrcType | int) -> None: ...
    crcStartBit: int
    """8 x byte + bit of the least significant bit, 0 to 511, for both byte orders."""
    crcLength: int
    """Number of bits, 0 to 64; a shorter field gets the low bits."""
    crcBigEndian: bool
    """True: Motorola byte order."""
    @property
    def crcKey(self) -> list[int]:
        """Key bytes, a list of up to 256 ints; used by CRC8_VARIANT only."""
    @crcKey.setter
    def crcKey(self, value: bytes | bytearray | list[int]) -> None: ...
    def __init__(
        self,
        *,
        counterEnabled: bool = ...,
        counterStartBit: int = ...,
        counterLength: int = ...,
        counterBigEndian: bool = ...,
        counterReset: bool = ...,
        crcType: CrcType | int = ...,
        crcStartBit: int = ...,
        crcLength: int = ...,
        crcBigEndian: bool = ...,
        crcKey: bytes | bytearray | list[int] = ...,
    ) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> FrameUpdate: ...
    def __deepcopy__(self, memo: dict[int, object]) -> FrameUpdate: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class SendResult:
    """Results of cyclic jobs; the calls return them as ints."""
    Done: ClassVar[SendResult]
    """0: The box did it."""
    NoSuchDevice: ClassVar[SendResult]
    """1: No box has this MAC address."""
    NoSuchJob: ClassVar[SendResult]
    """2: The box does not run this job."""
    InvalidParam: ClassVar[SendResult]
    """3: Refused; the log gives the reason."""
    DeviceRefused: ClassVar[SendResult]
    """4: The box refused the command."""
    TimedOut: ClassVar[SendResult]
    """5: The box did not answer in time."""
    NotConnected: ClassVar[SendResult]
    """6: The box is not connected."""
    __members__: ClassVar[dict[str, SendResult]]
    @property
    def name(self) -> str: ...
    @property
    def value(self) -> int: ...
    def __init__(self, value: int) -> None: ...
    def __int__(self) -> int: ...
    def __index__(self) -> int: ...
    def __hash__(self) -> int: ...
    def __eq__(self, other: object) -> bool: ...
    def __ne__(self, other: object) -> bool: ...
    def __invert__(self) -> int: ...
    def __lt__(self, other: SendResult | int) -> bool: ...
    def __le__(self, other: SendResult | int) -> bool: ...
    def __gt__(self, other: SendResult | int) -> bool: ...
    def __ge__(self, other: SendResult | int) -> bool: ...
    def __and__(self, other: SendResult | int) -> int: ...
    def __rand__(self, other: SendResult | int) -> int: ...
    def __or__(self, other: SendResult | int) -> int: ...
    def __ror__(self, other: SendResult | int) -> int: ...
    def __xor__(self, other: SendResult | int) -> int: ...
    def __rxor__(self, other: SendResult | int) -> int: ...

class CANCyclicFrameHandle:
    """A frame that a box sends cyclically."""
    @property
    def gid(self) -> str:
        """Identifier of the job, made when it starts."""
    @property
    def deviceInfo(self) -> DeviceHandle:
        """DeviceHandle of the box that sends the frame."""
    ms: int
    """Cycle time in ms; takes effect with updateCyclicCanFrame."""
    @property
    def result(self) -> int:
        """What the start came to, a SendResult as int; 0: the job runs."""
    def __init__(self) -> None: ...
    def __eq__(self, other: object) -> bool: ...
    def __copy__(self) -> CANCyclicFrameHandle: ...
    def __deepcopy__(self, memo: dict[int, object]) -> CANCyclicFrameHandle: ...
    __hash__: ClassVar[None]  # type: ignore[assignment]

class RecordingStatus:
    """Progress of a recording. After its end, offered = written + dropped + skipped."""
    @property
    def recording(self) -> bool:
        """True: a recording runs."""
    @property
    def offered(self) -> int:
        """Frames of the recorded channels so far."""
    @property
    def staged(self) -> int:
        """Frames in memory, not yet handed over."""
    @property
    def converted(self) -> int:
        """Frames laid out in the output format."""
    @property
    def written(self) -> int:
        """Frames in the file."""
    @property
    def dropped(self) -> int:
        """Frames lost; error tells why."""
    @property
    def skipped(self) -> int:
        """Frames of a kind that the format cannot hold."""
    @property
    def bytes(self) -> int:
        """Size of the file in bytes."""
    @property
    def seconds(self) -> float:
        """Duration in s from the start to the stop, or until now."""
    @property
    def error(self) -> str:
        """Text of the first failure, empty without one."""
    def __copy__(self) -> RecordingStatus: ...
    def __deepcopy__(self, memo: dict[int, object]) -> RecordingStatus: ...

class HandOverCounters:
    """Frames that one hand-over has seen since the start. At any quiet moment received = delivered
    + held + dropped.
    """
    @property
    def received(self) -> int:
        """Frames that came in."""
    @property
    def delivered(self) -> int:
        """Frames that were handed on."""
    @property
    def held(self) -> int:
        """Frames that wait here now."""
    @property
    def dropped(self) -> int:
        """Frames that end here."""
    def __copy__(self) -> HandOverCounters: ...
    def __deepcopy__(self, memo: dict[int, object]) -> HandOverCounters: ...

class ChannelCounters:
    """Traffic of one channel of a box."""
    @property
    def bus(self) -> str:
        """CAN, LIN, ETH or FLEXRAY."""
    @property
    def channel(self) -> int:
        """Index, counted from 0 per kind of bus."""
    @property
    def name(self) -> str:
        """Name as getChannelNames gives it."""
    @property
    def received(self) -> int:
        """Frames read from the box, its own transmissions included."""
    @property
    def busLoad(self) -> float:
        """Percent of the last whole second that the bus was busy, stuff bits left out."""
    def __copy__(self) -> ChannelCounters: ...
    def __deepcopy__(self, memo: dict[int, object]) -> ChannelCounters: ...

class DeviceCounters:
    """Hand-overs and channels of one box."""
    @property
    def mac(self) -> str:
        """MAC address, or serial number of a USB device."""
    @property
    def name(self) -> str:
        """Name of the box."""
    @property
    def library(self) -> HandOverCounters:
        """Queue in the box; frames are dropped when it is full or tracing stops."""
    @property
    def readers(self) -> HandOverCounters:
        """Reader threads; frames are dropped when nobody has subscribed."""
    @property
    def clockOffsetUs(self) -> int:
        """Clock of the box less clock of the host in microseconds, some milliseconds too small for
        the way of a frame; 0 before the first frame.
        """
    @property
    def channels(self) -> list[ChannelCounters]:
        """ChannelCounters of all channels."""
    def __copy__(self) -> DeviceCounters: ...
    def __deepcopy__(self, memo: dict[int, object]) -> DeviceCounters: ...

class Counters:
    """Every hand-over on the road of the frames: library, readers, resort, dispatch, delivery.
    What one has delivered, the next has received.
    """
    @property
    def library(self) -> HandOverCounters:
        """Queues of all boxes, those that are gone included."""
    @property
    def readers(self) -> HandOverCounters:
        """Reader threads of all boxes, those that are gone included."""
    @property
    def resort(self) -> HandOverCounters:
        """Buffer that holds frames for 240 ms and merges all boxes in time order."""
    @property
    def dispatch(self) -> HandOverCounters:
        """Dispatch thread; frames are dropped after exit()."""
    @property
    def delivery(self) -> HandOverCounters:
        """Callables: delivered to one or more, held for a list, dropped when no callable wants the
        frame. Recording takes its frames before.
        """
    @property
    def calls(self) -> int:
        """Calls of callables, one for each frame or list."""
    @property
    def callbackErrors(self) -> int:
        """Calls that raised."""
    @property
    def backlogAgeUs(self) -> int:
        """Microseconds that the oldest waiting frame is late; near 0 when scripts keep up."""
    @property
    def devices(self) -> list[DeviceCounters]:
        """DeviceCounters of the known boxes."""
    def __copy__(self) -> Counters: ...
    def __deepcopy__(self, memo: dict[int, object]) -> Counters: ...

def load() -> None:
    """Make the SDK ready and start to look for boxes. Further calls do nothing.

    Any other call does the same first; this one tells on standard output how it went: 'Init : true', or
    'Init : false' with the reason in the log.
    """

def exit() -> None:
    """Stop the SDK. To be called once, as the last call into the module.

    A running recording is completed and all callables are dropped; one that runs is given a second to
    return. Any later call raises RuntimeError.

    Raises:
        RuntimeError: called from a frame callable.
    """

def getDeviceList(type: DeviceType, timeout: int) -> list[DeviceHandle]:
    """Get the list of devices

    Returns at once when a box is known. Otherwise looks once a second, at least once, until there is
    one; Ctrl-C ends the wait. Boxes that do not answer are left out.

    Args:
        type: DeviceType.All; there is one kind of box.
        timeout: longest wait in ms.

    Returns:
        list of DeviceHandle, in the order in which the boxes were found; empty when there is none, and
        then 'no device!' is printed.
    """

def getDeviceConfig(handle: DeviceHandle) -> bool:
    """Get device configuration

    Asks the box and fills the handle's config with the answer.

    Returns:
        bool: False when the box does not answer or is not there; the config is unchanged then.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def setDeviceConfig(handle: DeviceHandle, config: BoxConfig | None = None) -> bool:
    """Set device configuration

    Writes the handle's config to the box and keeps in it what the box then reports.

    Args:
        handle: the box.
        config: taken into the handle first; None writes the handle's own.

    Returns:
        bool: False when the box refuses, does not answer or is not there; the reason is printed and
        logged, and the box keeps its old settings.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def sendCanFrame(
    handle: DeviceHandle,
    frame: CANRawFrame,
    *,
    update: FrameUpdate | None = None,
) -> None:
    """Send one frame through the box.

    A DLC of 0 is taken from the data; any other must agree with it. A frame that no bus carries is not
    sent, and the log gives the reason.

    Args:
        handle: the box.
        frame: what is sent, as CAN FD when its EDL is set; it is not changed.
        update: counter and CRC that are brought up to date first; None for neither.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def sendCanFDFrame(
    handle: DeviceHandle,
    frame: CANRawFrame,
    *,
    update: FrameUpdate | None = None,
) -> None:
    """Send one frame through the box as a CAN FD frame.

    A DLC of 0 is taken from the data; any other must agree with it. A frame that no bus carries is not
    sent, and the log gives the reason.

    Args:
        handle: the box.
        frame: what is sent, whatever its EDL says; it is not changed.
        update: counter and CRC that are brought up to date first; None for neither.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def startCyclicCanFrame(
    handle: DeviceHandle,
    frame: CANRawFrame,
    ms: int,
    limitCount: int,
    *,
    update: FrameUpdate | None = None,
) -> CANCyclicFrameHandle:
    """Let the box send a frame cyclically, on a fixed grid.

    Args:
        handle: the box.
        frame: what is sent, as CAN FD when its EDL is set; it is copied.
        ms: cycle time in ms, 1 and up.
        limitCount: number of transmissions; 0 or less: without end.
        update: counter and CRC that are brought up to date before every transmission.

    Returns:
        CANCyclicFrameHandle: the job runs when its result is 0.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def startCyclicCANFDFrame(
    handle: DeviceHandle,
    frame: CANRawFrame,
    ms: int,
    limitCount: int,
    *,
    update: FrameUpdate | None = None,
) -> CANCyclicFrameHandle:
    """Let the box send a CAN FD frame cyclically, on a fixed grid.

    Args:
        handle: the box.
        frame: what is sent, whatever its EDL says; it is copied.
        ms: cycle time in ms, 1 and up.
        limitCount: number of transmissions; 0 or less: without end.
        update: counter and CRC that are brought up to date before every transmission.

    Returns:
        CANCyclicFrameHandle: the job runs when its result is 0.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def stopCyclicCanFrame(cyclic: CANCyclicFrameHandle) -> int:
    """Stop a cyclic frame.

    Returns:
        int: 0 when done, else a SendResult.
    """

def stopCyclicCanFDFrame(cyclic: CANCyclicFrameHandle) -> int:
    """Stop a cyclic CAN FD frame.

    Returns:
        int: 0 when done, else a SendResult.
    """

def updateCyclicCanFrame(cyclic: CANCyclicFrameHandle, frame: CANRawFrame) -> int:
    """Replace the frame of a running job and set its cycle time to the handle's ms.

    The phase and the rolling counter go on.

    Returns:
        int: 0 when done, else a SendResult.
    """

def pauseCyclicCanFrame(cyclic: CANCyclicFrameHandle) -> int:
    """Pause a cyclic frame; its counter stands still.

    Returns:
        int: 0 when done, else a SendResult.
    """

def resumeCyclicCanFrame(cyclic: CANCyclicFrameHandle) -> int:
    """Resume a paused cyclic frame.

    Returns:
        int: 0 when done, else a SendResult.
    """

def startLinScheduleTable(handle: DeviceHandle, table: LinScheduleTable) -> int:
    """Run a LIN schedule table on the channel that it names, round after round until it is stopped.

    Returns:
        int: 0 when done, else a SendResult.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def stopLinScheduleTable(handle: DeviceHandle, channel: int) -> None:
    """Stop the LIN schedule table that runs on a channel of the box.

    Args:
        handle: the box.
        channel: LIN channel, counted from 0.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def rawValueToByte(
    data: list[int],
    rawValue: int,
    isBigEndian: bool,
    startBit: int,
    bitLength: int,
) -> list[int]:
    """Write a raw value into payload bytes and return the new bytes.

    Args:
        data: payload, ints 0 to 255; the list is not changed.
        rawValue: 0 to 2**64 - 1.
        isBigEndian: True for Motorola byte order.
        startBit: 8 x byte + bit of the least significant bit, for both byte orders.
        bitLength: number of bits.

    Returns:
        list of ints, as long as data; unchanged when the signal does not lie within it.
    """

def parseSignalValue(data: list[int], isBigEndian: bool, startBit: int, bitLength: int) -> int:
    """Raw value of a signal in payload bytes, unsigned.

    Arguments are those of rawValueToByte.

    Returns:
        int; 0xFFFFFFFFFFFFFFFF when the signal does not lie within the data.
    """

def readCanDBCContents(path: str) -> tuple[int, str]:
    """Text of a database file, whose encoding is guessed: UTF-8, UTF-16, GB18030 or Windows-1252.

    Returns:
        (code, text): code 0 done, 1 the file cannot be loaded; the log gives the reason.
    """

def readCanArxmlContents(path: str) -> tuple[int, str]:
    """Text of a database file, whose encoding is guessed: UTF-8, UTF-16, GB18030 or Windows-1252.

    Returns:
        (code, text): code 0 done, 1 the file cannot be loaded; the log gives the reason.
    """

def loadCanDBC(path: str) -> tuple[int, CanDbcDatabase]:
    """Load a DBC file.

    Returns:
        (code, CanDbcDatabase): code 0 done, 1 the file cannot be loaded; the log gives the reason.
    """

def loadCanArxml(path: str) -> tuple[int, CanArxmlDatabase]:
    """Load an ARXML file.

    Returns:
        (code, CanArxmlDatabase): code 0 done, 1 the file cannot be loaded; the log gives the reason.
    """

def loadLinLDF(path: str) -> tuple[int, LinLdfDatabaseItem]:
    """Load an LDF file.

    Returns:
        (code, LinLdfDatabaseItem): code 0 done, 1 the file cannot be loaded; the log gives the
        reason.
    """

def getScheduleTableFromLDF(path: str) -> tuple[int, list[LinScheduleTable]]:
    """Schedule tables of an LDF file, ready to be started on channel 0.

    Returns:
        (code, list of LinScheduleTable): code 0 done, 1 the file cannot be loaded or has no tables;
        the log gives the reason.
    """

def getCanFrameByNameFromDBC(path: str, name: str) -> tuple[int, CanDBCEntry]:
    """Frame of a database file by name; 29-bit ones are not found, see findFrame.

    Args:
        path: database file, loaded anew by every call.
        name: the exact name.

    Returns:
        (code, frame): code 0 done, 1 the file cannot be loaded, 2 no such frame; the log gives the
        reason. With another code than 0 the frame is an empty one.
    """

def getCanFrameByIdFromDBC(path: str, id: int) -> tuple[int, CanDBCEntry]:
    """Frame of a database file by identifier; 29-bit ones are not found, see findFrame.

    Args:
        path: database file, loaded anew by every call.
        id: 11-bit identifier.

    Returns:
        (code, frame): code 0 done, 1 the file cannot be loaded, 2 no such frame; the log gives the
        reason. With another code than 0 the frame is an empty one.
    """

def getCanSignalValueFromDBC(
    data: list[int],
    path: str,
    frameName: str,
    signalName: str,
) -> tuple[int, float | str | None]:
    """Decode one signal: the unsigned raw value x factor + offset.

    See decodeSignalPhysical for signed and float signals.

    Args:
        data: payload, ints 0 to 255.
        path: database file, loaded anew by every call.
        frameName, signalName: names in that file.

    Returns:
        (code, value): code 0 done, 1 the file cannot be loaded, 2 no such frame or signal; the log
        gives the reason. The value is the value table's text or, without one, a float; None with
        another code than 0.
    """

def setCanFrameBySignalFromDBC(
    frame: CANRawFrame,
    path: str,
    frameName: str,
    signalName: str,
    value: float,
) -> int:
    """Write a value into a frame's signal as the unscaled raw value.

    Neither factor nor limits count; see encodeSignalPhysical.

    Args:
        frame: its data is changed in place.
        path: database file, loaded anew by every call.
        frameName, signalName: names in that file.
        value: raw value; its fraction is cut off.

    Returns:
        int: 0 done, 1 the file cannot be loaded, 2 no such frame or signal.

    Raises:
        IndexError: the signal reaches beyond 64 bytes.
    """

def getCanFrameByNameFromArxml(path: str, name: str) -> tuple[int, CanFdDBCEntry]:
    """Frame of a database file by name; 29-bit ones are not found, see findFrame.

    Args:
        path: database file, loaded anew by every call.
        name: the exact name.

    Returns:
        (code, frame): code 0 done, 1 the file cannot be loaded, 2 no such frame; the log gives the
        reason. With another code than 0 the frame is an empty one.
    """

def getCanFrameByIdFromArxml(path: str, id: int) -> tuple[int, CanFdDBCEntry]:
    """Frame of a database file by identifier; 29-bit ones are not found, see findFrame.

    Args:
        path: database file, loaded anew by every call.
        id: 11-bit identifier.

    Returns:
        (code, frame): code 0 done, 1 the file cannot be loaded, 2 no such frame; the log gives the
        reason. With another code than 0 the frame is an empty one.
    """

def getCanSignalValueFromArxml(
    data: list[int],
    path: str,
    frameName: str,
    signalName: str,
) -> tuple[int, float | str | None]:
    """Decode one signal: the unsigned raw value x factor + offset.

    See decodeSignalPhysical for signed and float signals.

    Args:
        data: payload, ints 0 to 255.
        path: database file, loaded anew by every call.
        frameName, signalName: names in that file.

    Returns:
        (code, value): code 0 done, 1 the file cannot be loaded, 2 no such frame or signal; the log
        gives the reason. The value is the value table's text or, without one, a float; None with
        another code than 0.
    """

def setCanFrameBySignalFromArxml(
    frame: CANRawFrame,
    path: str,
    frameName: str,
    signalName: str,
    value: float,
) -> int:
    """Write a value into a frame's signal as the unscaled raw value.

    Neither factor nor limits count; see encodeSignalPhysical.

    Args:
        frame: its data is changed in place.
        path: database file, loaded anew by every call.
        frameName, signalName: names in that file.
        value: raw value; its fraction is cut off.

    Returns:
        int: 0 done, 1 the file cannot be loaded, 2 no such frame or signal.

    Raises:
        IndexError: the signal reaches beyond 64 bytes.
    """

def getLinSignalValueFromLDF(
    data: list[int],
    path: str,
    frameName: str,
    signalName: str,
) -> tuple[int, float | str | None]:
    """Decode one signal of an LDF file: the unsigned raw value, unscaled.

    See decodeSignalPhysical for scaled values.

    Args:
        data: payload, ints 0 to 255.
        path: LDF file, loaded anew by every call.
        frameName, signalName: names in that file.

    Returns:
        (code, value): as getCanSignalValueFromDBC.
    """

@overload
def decodeSignalPhysical(signal: CanDBCEntrySignal, data: bytes | bytearray | list[int]) -> float:
    """Physical value of one signal: sign, float, factor and offset count.

    Args:
        signal: record of a loaded database.
        data: payload bytes.

    Raises:
        ValueError: the signal does not lie within the data.
    """

@overload
def decodeSignalPhysical(signal: CanArxmlEntrySignal, data: bytes | bytearray | list[int]) -> float:
    """Physical value of one signal: sign, float, factor and offset count.

    Args:
        signal: record of a loaded database.
        data: payload bytes.

    Raises:
        ValueError: the signal does not lie within the data.
    """

@overload
def decodeSignalPhysical(signal: LinSignal, data: bytes | bytearray | list[int]) -> float:
    """Physical value of one signal: sign, float, factor and offset count.

    Args:
        signal: record of a loaded database.
        data: payload bytes.

    Raises:
        ValueError: the signal does not lie within the data.
    """

@overload
def encodeSignalPhysical(
    signal: CanDBCEntrySignal,
    data: bytes | bytearray | list[int],
    value: float,
) -> list[int]:
    """New payload bytes with one signal set to a physical value; other bits stay.

    Args:
        signal: record of a loaded database.
        data: payload bytes; they are not changed.
        value: physical value; the nearest raw value is written.

    Returns:
        list of ints, as long as data.

    Raises:
        ValueError: the value does not fit the signal or its limits, or the signal the data.
    """

@overload
def encodeSignalPhysical(
    signal: CanArxmlEntrySignal,
    data: bytes | bytearray | list[int],
    value: float,
) -> list[int]:
    """New payload bytes with one signal set to a physical value; other bits stay.

    Args:
        signal: record of a loaded database.
        data: payload bytes; they are not changed.
        value: physical value; the nearest raw value is written.

    Returns:
        list of ints, as long as data.

    Raises:
        ValueError: the value does not fit the signal or its limits, or the signal the data.
    """

@overload
def encodeSignalPhysical(
    signal: LinSignal,
    data: bytes | bytearray | list[int],
    value: float,
) -> list[int]:
    """New payload bytes with one signal set to a physical value; other bits stay.

    Args:
        signal: record of a loaded database.
        data: payload bytes; they are not changed.
        value: physical value; the nearest raw value is written.

    Returns:
        list of ints, as long as data.

    Raises:
        ValueError: the value does not fit the signal or its limits, or the signal the data.
    """

@overload
def decodeFrame(frame: CanDBCEntry, data: bytes | bytearray | list[int]) -> dict[str, float | str]:
    """Decode all signals of a frame that lie within the data and that its multiplexors select.

    Args:
        frame: record of a loaded database.
        data: payload bytes, up to 4096.

    Returns:
        dict of signal name to value-table text or, without one, physical value; in the order of the
        file.
    """

@overload
def decodeFrame(
    frame: CanFdDBCEntry,
    data: bytes | bytearray | list[int],
) -> dict[str, float | str]:
    """Decode all signals of a frame that lie within the data and that its multiplexors select.

    Args:
        frame: record of a loaded database.
        data: payload bytes, up to 4096.

    Returns:
        dict of signal name to value-table text or, without one, physical value; in the order of the
        file.
    """

@overload
def decodeFrame(frame: LDFFrame, data: bytes | bytearray | list[int]) -> dict[str, float | str]:
    """Decode all signals of a frame that lie within the data and that its multiplexors select.

    Args:
        frame: record of a loaded database.
        data: payload bytes, up to 4096.

    Returns:
        dict of signal name to value-table text or, without one, physical value; in the order of the
        file.
    """

@overload
def findFrame(
    database: CanDbcDatabase,
    key: str | int,
    extended: bool | None = None,
) -> CanDBCEntry | None:
    """Frame of a loaded database by name or identifier.

    Args:
        database: what a load call returned.
        key: the exact name or the identifier.
        extended: True for frames with 29-bit identifiers only, False for those with 11-bit ones only.

    Returns:
        The first such frame, or None.

    Raises:
        ValueError: the identifier is out of range.
    """

@overload
def findFrame(
    database: CanArxmlDatabase,
    key: str | int,
    extended: bool | None = None,
) -> CanFdDBCEntry | None:
    """Frame of a loaded database by name or identifier.

    Args:
        database: what a load call returned.
        key: the exact name or the identifier.
        extended: True for frames with 29-bit identifiers only, False for those with 11-bit ones only.

    Returns:
        The first such frame, or None.

    Raises:
        ValueError: the identifier is out of range.
    """

@overload
def findFrame(database: LinLdfDatabaseItem, key: str | int) -> LDFFrame | None:
    """Frame of a loaded LDF database by name or identifier, 0 to 63.

    Returns:
        The first such frame, or None.

    Raises:
        ValueError: the identifier is out of range.
    """

def subscribeCanFrame(
    handle: DeviceHandle,
    callback: Callable[[CANRawFrame], object] | None,
    *,
    filter: CANFrameFilterList | None = None,
) -> bool:
    """Call a callable with every CAN frame of a box, sent ones included.

    Args:
        handle: the box.
        callback: takes one frame, which it may keep; None counts and records without a call. It
            replaces an earlier one and runs on the SDK's own thread, in the order of the time stamps,
            240 ms after the frame's time. What it raises goes to sys.unraisablehook.
        filter: only frames that this list passes; None for all.

    Returns:
        bool: True when tracing could be started.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def unsubscribeCanFrame(handle: DeviceHandle) -> bool:
    """Drop the callable for CAN frames and stop tracing on the box, for all kinds of frames.

    Returns:
        bool: True when tracing could be stopped.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def subscribeCanFrameById(id: int, callback: Callable[[CANRawFrame], object] | None) -> None:
    """Count the CAN frames with an identifier and call a callable with them.

    Frames of every box that is traced count, sent ones included; the call starts no tracing. An earlier
    callable is replaced, the counter goes on.

    Args:
        id: CAN identifier, 0 to 2**32 - 1.
        callback: takes one CANRawFrame; None counts without a call.
    """

def unsubscribeCanFrameById(id: int) -> None:
    """Drop the callable and the counter of an identifier."""

def getCanFrameCountById(id: int) -> int:
    """CAN frames with an identifier delivered since it was subscribed; 0 when it is not."""

def subscribeLinFrame(
    handle: DeviceHandle,
    callback: Callable[[LinFrame], object] | None,
    *,
    filter: LINFrameFilterList | None = None,
) -> bool:
    """Call a callable with every LIN frame of a box, sent ones included.

    Args:
        handle: the box.
        callback: takes one frame, which it may keep; None counts and records without a call. It
            replaces an earlier one and runs on the SDK's own thread, in the order of the time stamps,
            240 ms after the frame's time. What it raises goes to sys.unraisablehook.
        filter: only frames that this list passes; None for all.

    Returns:
        bool: True when tracing could be started.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def unsubscribeLinFrame(handle: DeviceHandle) -> bool:
    """Drop the callable for LIN frames and stop tracing on the box, for all kinds of frames.

    Returns:
        bool: True when tracing could be stopped.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def subscribeEthFrame(handle: DeviceHandle, callback: Callable[[EthFrame], object] | None) -> bool:
    """Call a callable with every Ethernet frame of a box, sent ones included.

    Args:
        handle: the box.
        callback: takes one frame, which it may keep; None counts and records without a call. It
            replaces an earlier one and runs on the SDK's own thread, in the order of the time stamps,
            240 ms after the frame's time. What it raises goes to sys.unraisablehook.

    Returns:
        bool: True when tracing could be started.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def unsubscribeEthFrame(handle: DeviceHandle) -> bool:
    """Drop the callable for Ethernet frames and stop tracing on the box, for all kinds of frames.

    Returns:
        bool: True when tracing could be stopped.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def enableDataRecording(
    path: str,
    channels: list[int],
    format: int,
    *,
    canFilter: CANFrameFilterList | None = None,
    linFilter: LINFrameFilterList | None = None,
) -> None:
    """Record frames into a trace file as they are delivered.

    A second call while a recording runs changes nothing and says so on standard output.

    Args:
        path: file to write; an existing one is replaced.
        channels: channel numbers, counted from 0, of any kind of bus; an empty list records all.
        format: 1 writes ASC, any other number BLF.
        canFilter: only CAN frames that this list passes; None for all.
        linFilter: only LIN frames that this list passes; None for all.

    Raises:
        ValueError: the file cannot be made; the text gives the reason.
    """

def disableDataRecording() -> None:
    """End the recording and complete its file; does nothing without a recording."""

def getRecordingStatus() -> RecordingStatus:
    """Progress of the running recording, else of the last one."""

def subscribeCanFrames(
    handle: DeviceHandle,
    callback: Callable[[list[CANRawFrame]], object],
    *,
    maxFrames: int = ...,
    maxDelayMs: int = ...,
    filter: CANFrameFilterList | None = None,
) -> bool:
    """Call a callable with lists of the CAN frames of a box, in time order, sent ones included.

    The interpreter is entered once a list, so this keeps up with a busy bus beside script threads that
    compute. A box can have a callable for single frames and one for lists.

    Args:
        handle: the box.
        callback: takes a list of frames, which it may keep; it replaces an earlier one of this kind.
        maxFrames: a list is handed over when it holds so many, 1 to 100000.
        maxDelayMs: or when its first frame has waited about so long, in ms, 0 to 10000.
        filter: only frames that this list passes; None for all.

    Returns:
        bool: True when tracing could be started.

    Raises:
        ValueError: the handle's MAC address is malformed, or a number is out of its range.
    """

def unsubscribeCanFrames(handle: DeviceHandle) -> bool:
    """Drop the callable that takes lists; frames that wait for it are dropped with it.

    Tracing stops with the box's last subscription, unless a recording runs.

    Returns:
        bool: True when that went well.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def subscribeLinFrames(
    handle: DeviceHandle,
    callback: Callable[[list[LinFrame]], object],
    *,
    maxFrames: int = ...,
    maxDelayMs: int = ...,
    filter: LINFrameFilterList | None = None,
) -> bool:
    """Call a callable with lists of the LIN frames of a box, in time order, sent ones included.

    The interpreter is entered once a list, so this keeps up with a busy bus beside script threads that
    compute. A box can have a callable for single frames and one for lists.

    Args:
        handle: the box.
        callback: takes a list of frames, which it may keep; it replaces an earlier one of this kind.
        maxFrames: a list is handed over when it holds so many, 1 to 100000.
        maxDelayMs: or when its first frame has waited about so long, in ms, 0 to 10000.
        filter: only frames that this list passes; None for all.

    Returns:
        bool: True when tracing could be started.

    Raises:
        ValueError: the handle's MAC address is malformed, or a number is out of its range.
    """

def unsubscribeLinFrames(handle: DeviceHandle) -> bool:
    """Drop the callable that takes lists; frames that wait for it are dropped with it.

    Tracing stops with the box's last subscription, unless a recording runs.

    Returns:
        bool: True when that went well.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def getCounters() -> Counters:
    """Counters of all hand-overs between the boxes and the callables, since the start."""

def getChannelNames(handle: DeviceHandle) -> list[str]:
    """Names of a box's channels, for filter lists.

    Returns:
        list of names such as 'RV-Hub4e.CAN1'; empty when the box is gone. Filter lists also take the
        short form 'CAN1', which is channel 0 of any box.

    Raises:
        ValueError: the handle's MAC address is malformed.
    """

def attachDatabase(handle: DeviceHandle, channel: int, path: str) -> int:
    """Name the frames of a channel by a database; frames received later carry the name.

    Args:
        handle: the box.
        channel: channel of the database's kind of bus, 0 to 255.
        path: database file; '.ldf' for LIN, '.dbc', '.arxml' or '.json' for CAN.

    Returns:
        int: 0, or 1 when the file cannot be loaded; the log gives the reason.

    Raises:
        ValueError: the handle's MAC address is malformed, or channel is out of range.
    """

def detachDatabase(handle: DeviceHandle, channel: int) -> None:
    """Take the CAN and the LIN database of a channel away."""

def toLinMessage(handle: DeviceHandle, frame: LinFrame) -> LinMessage:
    """A received LinFrame together with what the channel's database knows of it.

    Returns:
        LinMessage: its frame is the LDFFrame of the database, or None when none is attached or the
        database has no frame with this identifier.
    """
