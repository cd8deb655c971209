symbol
