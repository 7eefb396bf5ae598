// How a serial port is to be set up, with a one-line text form such as
// "baud=9600;data=8;device=COM1;flow=off;parity=none;stop=1".
//
// Every line setting has a value 0 that means "not given": it is left out of the text
// and the port keeps its current value. Setters validate nothing. Time-outs and queue
// sizes have no text form.
#ifndef OVO_IO_SERIAL_CONFIG_H
#define OVO_IO_SERIAL_CONFIG_H

#include <ovo/export.h>

#include <string>

namespace ovo {
namespace io {

// A fixed underlying type makes every int a valid value: one outside the table (set
// through a cast) is kept and simply sets no key in the text form.
enum DataSize : int { dataSizeUnset = 0, dataSize5 = 1, dataSize6 = 2, dataSize7 = 3, dataSize8 = 4 };
enum Parity : int { parityUnset = 0, parityEven = 1, parityOdd = 2, parityNone = 3 };
enum StopBits : int { stopBitsUnset = 0, stopBits1 = 1, stopBits1_5 = 2, stopBits2 = 3 };
enum FlowControl : int { flowUnset = 0, flowOff = 1, flowSoftware = 2, flowHardware = 3 };

// Milliseconds. Total read time-out = readConstant + readMultiplier x bytes.
struct SerialTimeouts {
    unsigned int readInterval;
    unsigned int readConstant;
    unsigned int readMultiplier;
    unsigned int writeConstant;
    unsigned int writeMultiplier;
};

// The driver's receive and transmit queues, in bytes.
struct SerialBuffersSize {
    unsigned int inputSize;
    unsigned int outputSize;
};

class OVO_API SerialConfig {
public:
    // Empty name, line settings 0. Time-outs and queue sizes start at all zeros (the
    // platform's own defaults: reads wait until they are met); set both before opening.
    SerialConfig();
    SerialConfig(const SerialConfig& other);
    SerialConfig(SerialConfig&& other) noexcept; // the source keeps its numeric members
    SerialConfig& operator=(const SerialConfig& other);
    SerialConfig& operator=(SerialConfig&& other) noexcept;
    ~SerialConfig();

    const std::string& deviceName() const;
    void setDeviceName(const std::string& name);
    unsigned int baudRate() const;
    void setBaudRate(unsigned int rate);
    DataSize dataSize() const;
    void setDataSize(DataSize size);
    Parity parity() const;
    void setParity(Parity parity);
    StopBits stopBits() const;
    void setStopBits(StopBits bits);
    FlowControl flowControl() const;
    void setFlowControl(FlowControl flow);
    const SerialTimeouts& commTimeouts() const;
    void setCommTimeouts(const SerialTimeouts& timeouts);
    const SerialBuffersSize& buffersSize() const;
    void setBuffersSize(const SerialBuffersSize& sizes);

    // The settings that are given, keys in name order; "" for a default configuration.
    std::string toString() const;
    // Unknown keys are ignored and unknown words read as 0; a `baud` or `data` value that
    // is no 32-bit decimal number throws the exception of NumberParser::parseInt.
    static SerialConfig fromString(const std::string& text);

private:
    std::string deviceName_;
    unsigned int baudRate_;
    DataSize dataSize_;
    Parity parity_;
    StopBits stopBits_;
    FlowControl flowControl_;
    SerialTimeouts commTimeouts_;
    SerialBuffersSize buffersSize_;
};

} // namespace io
} // namespace ovo

#endif
