# aliases of the pins: part, pins and their nets
Q_Q1      C=vcc B=n2 E=out
R_RL      1=out 2=0
