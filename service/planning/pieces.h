// Long writes and condition reads are cut into pieces that one frame carries.
#ifndef DOV417MODBUS_PIECES_H
#define DOV417MODBUS_PIECES_H

enum {
    unlimitedPieceWords = 123, // one write of the Modbus protocol, where the host sets no limit
    unlimitedPieceBits = 984
};

// KEY_ADDRESS::bitFlag of a key whose values are bits.
enum {
    bitValues = -1
};

// The host's limit for one piece, or that of the Modbus protocol where it set none.
int pieceLimit(int bitFlag);

#endif
