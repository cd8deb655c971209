# aliases of the pins: part, pins and their nets
C_C1      1=p 2=0
R_RL      1=p 2=0
