#pragma once

#include "measure/Meter.h"
#include "measure/SampleFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <type_traits>

// One channel of raw frames as the meters that must be exact read it: each
// sample as a double at full scale ±1.0, which holds every sample of every
// kind the pass takes exactly (integers of up to 32 bits scaled by a power
// of two, floats as they are). The kind is a type, so that a meter's loop
// over a channel is made for each kind with no branch on it inside.
template <SampleKind Kind>
struct ChannelSamples {
    const std::uint8_t* first = nullptr; // the channel's sample in the first frame
    std::uint32_t count = 0;
    std::uint32_t stride = 0;
    double scale = 1; // full scale of an integer kind, as a power of two

    static constexpr bool kInteger = Kind != SampleKind::Float32 && Kind != SampleKind::Float64;

    // An integer sample's code, 8-bit samples around 0.
    std::int32_t Code(std::uint32_t i) const
    {
        static_assert(kInteger);
        constexpr int kBytes = Kind == SampleKind::Unsigned8 ? 1 : Kind == SampleKind::Signed16 ? 2
                             : Kind == SampleKind::Signed24 ? 3 : 4;
        return SampleAt<kBytes>(first + std::size_t{i} * stride);
    }

    // The sample as the file holds it: NaN and the infinities stay.
    double Raw(std::uint32_t i) const
    {
        const std::uint8_t* at = first + std::size_t{i} * stride;
        if constexpr (Kind == SampleKind::Float32)
            return FloatAt<float>(at);
        else if constexpr (Kind == SampleKind::Float64)
            return FloatAt<double>(at);
        else
            return Code(i) * scale;
    }

    // The sample as every meter takes it: a float that is no level is
    // silence, as in the decoded frames.
    double operator[](std::uint32_t i) const
    {
        if constexpr (Kind == SampleKind::Float32 || Kind == SampleKind::Float64) {
            bool kept;
            return Measurable(Raw(i), kept);
        } else {
            return Raw(i);
        }
    }
};

// Sums of squares and products are kept in this many lanes, by a frame's
// place in its step or block: four sums that don't wait on each other, in
// an order that depends on nothing but the frame's place, so the figures
// are the same however the frames come.
constexpr std::uint32_t kSumLanes = 4;

// Calls add(i, lane) for each sample i of a channel view whose first
// sample is the frame at place in its step, the lane always a constant of
// its own type, so that sums indexed by it stay in registers: samples one
// at a time up to the first of lane 0, then kSumLanes at a time, then the
// rest.
template <typename Add>
void ForEachInLanes(std::uint32_t count, std::uint32_t place, Add&& add)
{
    using Lane0 = std::integral_constant<std::uint32_t, 0>;
    using Lane1 = std::integral_constant<std::uint32_t, 1>;
    using Lane2 = std::integral_constant<std::uint32_t, 2>;
    using Lane3 = std::integral_constant<std::uint32_t, 3>;
    const auto one = [&](std::uint32_t i) {
        switch ((place + i) % kSumLanes) {
        case 0: add(i, Lane0{}); break;
        case 1: add(i, Lane1{}); break;
        case 2: add(i, Lane2{}); break;
        default: add(i, Lane3{}); break;
        }
    };
    std::uint32_t i = 0;
    for (; i < count && (place + i) % kSumLanes != 0; ++i)
        one(i);
    for (; i + kSumLanes <= count; i += kSumLanes) {
        add(i, Lane0{});
        add(i + 1, Lane1{});
        add(i + 2, Lane2{});
        add(i + 3, Lane3{});
    }
    for (; i < count; ++i)
        one(i);
}

// Calls add with the parts of frames cut where steps of stepFrames frames
// end (the steps of a window, the blocks of a correlation), and then ended
// after each step that ends there; done counts the frames of the step under
// way, and still holds its count before a part while add takes it in.
template <typename Add, typename Ended>
void CutAtSteps(const RawFrames& frames, std::uint32_t stepFrames, std::uint32_t& done, Add&& add, Ended&& ended)
{
    for (std::uint32_t at = 0; at < frames.frames;) {
        const std::uint32_t part = std::min(frames.frames - at, stepFrames - done);
        add(RawFrames{frames.data + std::size_t{at} * frames.stride, part, frames.stride});
        at += part;
        done += part;
        if (done == stepFrames) {
            done = 0;
            ended();
        }
    }
}

// Calls visit with the view of channel c of the frames, typed by the
// format's kind.
template <typename Visit>
void ViewChannel(const SampleFormat& format, const RawFrames& frames, std::uint32_t c, Visit&& visit)
{
    const std::uint8_t* first = frames.data + std::size_t{c} * format.bytesPerSample;
    const double scale = std::ldexp(1.0, 1 - static_cast<int>(format.bits));
    switch (format.kind) {
    case SampleKind::Unsigned8: visit(ChannelSamples<SampleKind::Unsigned8>{first, frames.frames, frames.stride, scale}); break;
    case SampleKind::Signed16: visit(ChannelSamples<SampleKind::Signed16>{first, frames.frames, frames.stride, scale}); break;
    case SampleKind::Signed24: visit(ChannelSamples<SampleKind::Signed24>{first, frames.frames, frames.stride, scale}); break;
    case SampleKind::Signed32: visit(ChannelSamples<SampleKind::Signed32>{first, frames.frames, frames.stride, scale}); break;
    case SampleKind::Float32: visit(ChannelSamples<SampleKind::Float32>{first, frames.frames, frames.stride, 1.0}); break;
    case SampleKind::Float64: visit(ChannelSamples<SampleKind::Float64>{first, frames.frames, frames.stride, 1.0}); break;
    }
}

// Calls visit with the views of channels c and c + 1, of one type.
template <typename Visit>
void ViewPair(const SampleFormat& format, const RawFrames& frames, std::uint32_t c, Visit&& visit)
{
    ViewChannel(format, frames, c, [&](auto left) {
        auto right = left;
        right.first += format.bytesPerSample;
        visit(left, right);
    });
}
