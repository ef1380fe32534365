#pragma once

// A header-only C++17 wrapper of the enumeration: none of its types crosses the DLL boundary.

#include <stddef.h>

#include <string_view>

#include "GraphicCardEnumeration.h"
#include "GraphicCardInfo.h"

namespace orvel::shared::enumeration {

/// A card of GraphicCards: each property under its getter's name without "Get". It refers to a record; the card and its
/// texts are valid as long as the record. See GraphicCardInfo for the meaning of the properties.
class GraphicCard {
public:
    explicit GraphicCard(const GraphicCardInfo& card) : record(&card) {}

    /// Returns the record itself.
    const GraphicCardInfo& Info() const { return *record; }

    unsigned int AvailabilityCode() const { return record->GetAvailabilityCode(); }
    std::string_view AvailabilityStatus() const { return record->GetAvailabilityStatus(); }
    unsigned int ConfigError() const { return record->GetConfigError(); }
    std::string_view ConfigErrorStatus() const { return record->GetConfigErrorStatus(); }
    bool UserConfig() const { return record->GetUserConfig(); }
    std::string_view CurrentResolution() const { return record->GetCurrentResolution(); }
    unsigned int CurrentRefreshRate() const { return record->GetCurrentRefreshRate(); }
    std::string_view DriverVersion() const { return record->GetDriverVersion(); }
    bool IsAeroEnabled() const { return record->GetIsAeroEnabled(); }
    std::string_view GraphicsCardSn() const { return record->GetGraphicsCardSn(); }
    unsigned int BusId() const { return record->GetBusId(); }
    std::string_view DeviceId() const { return record->GetDeviceId(); }
    std::string_view SubsystemId() const { return record->GetSubsystemId(); }
    std::string_view CardName() const { return record->GetCardName(); }
    std::string_view ChipName() const { return record->GetChipName(); }
    std::string_view Manufacturer() const { return record->GetManufacturer(); }
    std::string_view BusInterface() const { return record->GetBusInterface(); }
    float PcieGeneration() const { return record->GetPcieGeneration(); }
    float PciTransferRate() const { return record->GetPciTransferRate(); }
    unsigned int PciLanes() const { return record->GetPciLanes(); }
    float PixelFillRate() const { return record->GetPixelFillRate(); }
    float TextureFillRate() const { return record->GetTextureFillRate(); }
    float CudaCapability() const { return record->GetCudaCapability(); }
    unsigned int MaxTemperature() const { return record->GetMaxTemperature(); }
    unsigned int TemperateSlowdown() const { return record->GetTemperateSlowdown(); }
    unsigned int TemperatureShutdown() const { return record->GetTemperatureShutdown(); }
    std::string_view GpuType() const { return record->GetGpuType(); }
    bool MultiGpuSupport() const { return record->GetMultiGpuSupport(); }
    float GpuClockMax() const { return record->GetGpuClockMax(); }
    float GpuBoostClock() const { return record->GetGpuBoostClock(); }
    float MemoryClockMax() const { return record->GetMemoryClockMax(); }
    float MemoryBoostClock() const { return record->GetMemoryBoostClock(); }
    unsigned int MemorySize() const { return record->GetMemorySize(); }
    unsigned int MemorySharedSize() const { return record->GetMemorySharedSize(); }
    std::string_view MemoryType() const { return record->GetMemoryType(); }
    float MemoryBandwidth() const { return record->GetMemoryBandwidth(); }
    unsigned int MemoryBusWidth() const { return record->GetMemoryBusWidth(); }
    unsigned int Cores() const { return record->GetCores(); }
    unsigned int Shaders() const { return record->GetShaders(); }
    std::string_view DriverReleaseDate() const { return record->GetDriverReleaseDate(); }
    std::string_view BiosVersion() const { return record->GetBiosVersion(); }
    bool NvidiaSli() const { return record->GetNvidiaSli(); }
    bool AmdCrossfire() const { return record->GetAmdCrossfire(); }
    unsigned int EccStatus() const { return record->GetEccStatus(); }
    unsigned int EccSingleBitErrors() const { return record->GetEccSingleBitErrors(); }
    unsigned int EccDoubleBitErrors() const { return record->GetEccDoubleBitErrors(); }
    std::string_view AdapterName() const { return record->GetAdapterName(); }
    unsigned int AdapterRam() const { return record->GetAdapterRam(); }
    std::string_view AdapterStatus() const { return record->GetAdapterStatus(); }

private:
    const GraphicCardInfo* record;
};

/// The graphics adapters of this computer at the time of the last Enumerate. It owns their records. It can be moved, not
/// copied. For range-for: `for (const GraphicCard card : cards)`.
class GraphicCards {
public:
    /// Forward position of a range-for.
    class Iterator {
    public:
        Iterator(const GraphicCardEnumeration* of, size_t place) : cards(of), index(place) {}
        GraphicCard operator*() const { return GraphicCard(*cards->get(static_cast<int>(index))); }
        Iterator& operator++()
        {
            ++index;
            return *this;
        }
        bool operator==(const Iterator& other) const { return index == other.index; }
        bool operator!=(const Iterator& other) const { return index != other.index; }

    private:
        const GraphicCardEnumeration* cards;
        size_t index;
    };

    /// Creates an object without cards.
    GraphicCards() = default;
    GraphicCards(GraphicCards&& other) noexcept : enumeration(other.enumeration) { other.enumeration = nullptr; }
    GraphicCards& operator=(GraphicCards&& other) noexcept
    {
        GraphicCardEnumeration* const taken = other.enumeration;
        other.enumeration = nullptr;
        delete enumeration;
        enumeration = taken;
        return *this;
    }
    GraphicCards(const GraphicCards&) = delete;
    GraphicCards& operator=(const GraphicCards&) = delete;
    ~GraphicCards() { delete enumeration; }

    /// Enumerates the cards. All previous cards and references to them become invalid. The thread must have initialised
    /// COM. Throws what GraphicCardEnumeration::QueryGraphicCards throws; the cards found before the failure remain.
    void Enumerate()
    {
        *this = GraphicCards();
        enumeration = new GraphicCardEnumeration;
        enumeration->QueryGraphicCards();
    }

    size_t size() const { return enumeration ? enumeration->size() : 0; }
    bool empty() const { return size() == 0; }

    /// Returns the card at `index`, which must be below size().
    GraphicCard operator[](size_t index) const { return *Iterator(enumeration, index); }

    Iterator begin() const { return Iterator(enumeration, 0); }
    Iterator end() const { return Iterator(enumeration, size()); }

private:
    GraphicCardEnumeration* enumeration = nullptr;
};

} // namespace orvel::shared::enumeration
