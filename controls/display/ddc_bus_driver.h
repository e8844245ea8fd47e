// DdcBusDriver: the DDC/CI exchanges (Get, Set, Save, probe) over a bus driver's own carriage of bytes.
#pragma once

#include <cstdint>

#include "display/ddc_protocol.h"
#include "display/i2c_driver.h"
#include "platform/clock.h"
#include "platform/export.h"

namespace uc::display {

// Opt-in care for monitors that corrupt replies. The default (all off) never checks a reply's checksum and
// never retries, so a failure costs no extra time.
struct StrictMode {
    bool verifyChecksum = false;  // read the eleventh byte and refuse a reply whose checksum is wrong
    unsigned retries = 0;         // further attempts of a failed exchange, each after a back-off pause
};

// Back-off before retry `attempt` (1, 2, ...): 50 ms doubling per attempt, at most 400 ms.
UC_API Millis RetryBackOff(unsigned attempt);

}  // namespace uc::display

// The part the NVAPI, ADL and i2c-dev drivers share: message order, pauses, the reply check, the last-reply
// buffer and the index check. A derived driver supplies its device list and how bytes reach the bus.
class UC_API DdcBusDriver : public I2CDriver {
public:
    bool SetVCP(unsigned device, std::uint8_t code, std::uint8_t value) override;
    bool GetVCP(unsigned device, std::uint8_t code, std::uint8_t& maximum, std::uint8_t& current) override;
    bool SaveCurrentSettings(unsigned device) override;

    // Copies the raw bytes of the latest Get VCP reply (valid or not; zero when its read failed).
    void GetLastPacket(std::uint8_t out[uc::display::ddc::ReplySize]) const;
    // Whether the vendor library (or bus) was found and started.
    virtual bool IsInitialized() const = 0;
    // A short name of the carriage for tools ("NVAPI", "ADL", "i2c-dev").
    virtual const wchar_t* Carriage() const = 0;
    virtual unsigned DeviceCount() const = 0;

    // Pauses go through this clock (the system clock unless set); it must outlive the driver.
    void SetClock(uc::Clock& clock) { m_clock = &clock; }
    void SetStrictMode(const uc::display::StrictMode& mode) { m_strict = mode; }
    const uc::display::StrictMode& GetStrictMode() const { return m_strict; }
    // Why the latest Get VCP failed (Ok after a success or a failed transfer).
    uc::display::ddc::ReplyStatus LastReplyStatus() const { return m_lastStatus; }

protected:
    DdcBusDriver() = default;
    // Sends a full message (m.bytes[0] is 0x6E) to `device`; true when the bus accepted it.
    virtual bool WriteMessage(unsigned device, const uc::display::ddc::Message& message) = 0;
    // Reads `size` reply bytes from 0x6F of `device` into `buffer`; true when the bus delivered them.
    virtual bool ReadReply(unsigned device, std::uint8_t* buffer, std::size_t size) = 0;
    // The probe that decides whether a candidate joins the device list: a Get VCP of brightness.
    // The candidate must already sit at `device` in the list.
    bool Probe(unsigned device);
    void Pause(uc::Millis duration) { m_clock->SleepFor(duration); }

private:
    bool ValidIndex(unsigned device) const { return device < DeviceCount(); }
    bool Send(unsigned device, const uc::display::ddc::Message& message, uc::Millis pause);
    bool GetOnce(unsigned device, std::uint8_t code, std::uint8_t& maximum, std::uint8_t& current);

    std::uint8_t m_lastReply[uc::display::ddc::ReplySize] = {};
    uc::Clock* m_clock = &uc::Clock::System();
    uc::display::StrictMode m_strict;
    uc::display::ddc::ReplyStatus m_lastStatus = uc::display::ddc::ReplyStatus::Ok;
};
