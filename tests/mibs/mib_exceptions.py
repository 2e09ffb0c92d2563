"""Where the texts and the library differ on purpose, and why. The tests hold each list to what is there, so that none
gets stale."""

# Index objects that the library registers read-only and that answer nothing: not-accessible in the texts.
NOT_ACCESSIBLE = """
nVlanMacVlanAddr
nVlanSubnetVlanAddrType nVlanSubnetVlanAddr nVlanSubnetVlanPrefixLen
nVlanPortIfIndex
nVlanProtocolVlanFrameType nVlanProtocolVlanProtocolValue
nVlanProtocolVlanIfIndex nVlanProtocolVlanIfGroupId
nPrivateVlanVlanIndex
nPrivateVlanIfVlanMapIfIndex nPrivateVlanIfVlanMapSecVlan
dVoiceVlanOuiAddress dVoiceVlanOuiMask
dVoiceVlanLldpMedDeviceIndex
nL2FDBMcastFilterModeIfIndex
mgmdIgmpLimitIfIndex mgmdIgmpLimitType
mgmdMldLimitIfIndex mgmdMldLimitType
""".split() + [prefix + column for prefix in ("mgmdIgmpSnp", "mgmdMldSnp") for column in """
IfIndex
GroupIfIndex GroupVlanIfIndex GroupAddressType GroupAddress GroupSrcAddress
MrouterIfIndex MrouterType
FilterIfIndex FilterVlanIfIndex FilterType
AccGrpIfIndex AccGrpVlanIfIndex AccGrpType
HostVlan HostAddressType HostGroupAddress HostIfIndex
StatisticIfIndex StatisticVlanIfIndex StatisticType
StatisticGroupVlan StatisticGroupAddressType StatisticGroupAddress
""".split()]

# Index objects that answer: read-only in the texts, though modules of this SMI version should have none.
ACCESSIBLE_INDEX = """
swPortIndex
swPowerSavingPort
swDdmPort swDdmThresholdType
nVlanInterfaceVid
dVoiceVlanIfIndex
dVoiceVlanDeviceIfIndex dVoiceVlanDeviceMac
proxyARPIfIndex localproxyARPIfIndex
mgmdIgmpAccGrpIfIndex mgmdMldAccGrpIfIndex
mvrSourceVlanGroupVlanId mvrSourceVlanGroupAddressType mvrSourceVlanGroupAddress mvrSourceVlanGroupCount
mvrPortVlanId
""".split()

# Registered read-write, without a write method; without an answer.
NEVER_WRITABLE = "mgmdIgmpSnpGlobal mgmdMldSnpGlobal mvrSourceVlanGroupCount".split()
NEVER_ANSWER = "mgmdIgmpSnpGlobal mgmdMldSnpGlobal nVlanScalar6 nVlanScalar7".split()

# Every SET is refused, whatever the value; the error that values in the range get.
ALWAYS_REFUSED = {
    "nVlanScalar6": "genErr",
    "nVlanScalar7": "genErr",
    # It takes another type than it is registered with.
    "mgmdIgmpSnpMinimumVersion": "wrongType",
    "mgmdMldSnpMinimumVersion": "wrongType",
}

# Named numbers that are read and cannot be set.
ONLY_READ = {"swPortSpeed": [4], "swPortBreakout": [0]}

# The library passes on what is out of range, and the switch refuses it.
CHECKED_BY_THE_SWITCH = """
nVlanMacVlanId nVlanMacVlanPriority
nVlanSubnetVlanId nVlanSubnetVlanPriority
nVlanProtocolVlanVlanId nVlanProtocolVlanPriority
nPrivateVlanIfVlanMapPriVlan
""".split()

# Longer values are accepted; what is too much has no effect.
CUT = """
mgmdIgmpSnpMrouterDesignate mgmdIgmpSnpMrouterNotAllowed mgmdIgmpSnpAccessGroup
mgmdMldSnpMrouterDesignate mgmdMldSnpMrouterNotAllowed mgmdMldSnpAccessGroup
mgmdIgmpAccessGroup mgmdMldAccessGroup
dVoiceVlanOuiDes
mvrSourcePortList mvrReceivePortList
""".split()
