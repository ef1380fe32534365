#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "matching/Cards.h"

namespace orvel::shared::inventory {

// Readings for tests, in the form in which Windows returns them.

RawValue Refused(uint32_t error);
RawValue PropertyOf(std::u16string_view text);
RawValue PropertyOf(const std::vector<std::u16string>& texts);
RawValue NumberProperty(uint32_t number);
RawValue LongProperty(uint64_t number);
RawValue BooleanProperty(bool isTrue);
RawValue PowerProperty(uint32_t state);
RawValue FileTimeProperty(uint64_t ticks);
RawValue RegistryOf(std::u16string_view text);
RawValue RegistryBytes(uint32_t type, std::vector<unsigned char> bytes);

/// The bytes of a number, least significant first.
std::vector<unsigned char> BytesOf(uint64_t number, std::size_t count);

RawValue& At(DeviceReading& device, DeviceProperty property);
RawValue& At(DriverKeyReading& key, DriverKeyValue value);

/// A device with an instance id and no other property.
DeviceReading BareDevice(std::u16string_view instanceId);

/// NVIDIA's GeForce RTX 3060 on this bus, without a problem and awake.
DeviceReading GeForce(uint32_t bus, uint64_t luid);

/// The same without the LUID property, which exists since Windows 10.
DeviceReading GeForceWithoutLuid(uint32_t bus);

/// A driver key without values.
DriverKeyReading EmptyKey();

/// The DXGI adapter of the device GeForce.
DxgiAdapter GeForceAdapter(uint64_t luid, uint64_t dedicatedBytes);

/// Readings in which every source has answered, except the vendors' libraries, which the depth excludes.
Readings HealthyReadings();

/// An active path from the adapter to a screen of 3840 x 2160 pixels at 59.94 Hz.
DisplayPath PathTo(uint64_t luid, std::u16string gdiName);

/// Two equal cards with different memory, displays and DXCore entries, and Microsoft's software adapter.
Readings TwoEqualCards();

// The instance ids of GeForce(1, ...) and GeForce(2, ...).
inline const std::string firstId = "PCI\\VEN_10DE&DEV_2504&SUBSYS_40741458&REV_A1\\4&0&1";
inline const std::string secondId = "PCI\\VEN_10DE&DEV_2504&SUBSYS_40741458&REV_A1\\4&0&2";

/// A value without its source.
Answer AnswerOf(const Card& card, Property property);

/// The GDI names of a card's displays, "?" for one without; empty if the displays are not known.
std::vector<std::string> GdiNamesOf(const Card& card);

/// The card with this instance id; fails the test if there is none.
const Card& CardOf(const std::vector<Card>& cards, std::string_view instanceId);

inline constexpr uint64_t gibibyte = 1 << 30;

} // namespace orvel::shared::inventory
